// What the command says of files: which formats it knows by sight, and why one could not be read or written.
#pragma once
#include "codecs/Formats.h"
#include <filesystem>
#include <optional>
#include <string>

namespace pixkit::cli {

// What a file is by its extension; nothing for what this version does not write.
std::optional<FileFormat> formatOf(const std::filesystem::path& file);

// Why a file that the component would not load is none it could: "no such file", "is a JPEG file, which this version
// cannot read", ...
std::string loadFailureReason(const std::filesystem::path& file);

// Why this version cannot write the format that the file's extension asks for; nothing when it can.
std::optional<std::string> formatProblem(const std::filesystem::path& target);

// Why a target that the component would not write could not be: "its folder does not exist", ...
std::string saveFailureReason(const std::filesystem::path& target);

} // namespace pixkit::cli
