// Which files are there, and what their extensions say.
#pragma once
#include "codecs/Formats.h"
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace pixkit::cli {

// Whether there is a file of that name, in UTF-8, which is no folder, device or pipe.
bool isFile(std::string_view name);

// What a file is by its extension; nothing for what this version does not write.
std::optional<FileFormat> formatOf(const std::filesystem::path& file);

// Why this version cannot write the format that the file's extension asks for; nothing when it can.
std::optional<std::string> formatProblem(const std::filesystem::path& target);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
