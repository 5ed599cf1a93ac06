// Which files are there, and what their extensions say.
#pragma once
#include "codecs/Formats.h"
#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace pixkit::cli {

// Whether there is a file of that name, in UTF-8, which is no folder, device or pipe.
bool isFile(std::string_view name);
// Whether there is a folder of that name; of a name that is no text there is none.
bool isFolder(std::string_view name);

// The formats as a person writes them with --to: extensions without their dots.
inline constexpr std::array<std::string_view, 7> formatWords = {"bmp", "tga", "png", "gif", "jpg", "ico", "cur"};

// What a file is by its extension; nothing for what this version does not write.
std::optional<FileFormat> formatOf(const std::filesystem::path& file);

// Why this version cannot write the format that the file's extension asks for; nothing when it can.
std::optional<std::string> formatProblem(const std::filesystem::path& target);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
