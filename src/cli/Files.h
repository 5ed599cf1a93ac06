// What the extensions of files say.
#pragma once
#include "codecs/Formats.h"
#include <filesystem>
#include <optional>
#include <string>

namespace pixkit::cli {

// What a file is by its extension; nothing for what this version does not write.
std::optional<FileFormat> formatOf(const std::filesystem::path& file);

// Why this version cannot write the format that the file's extension asks for; nothing when it can.
std::optional<std::string> formatProblem(const std::filesystem::path& target);

} // namespace pixkit::cli
