// Text in and out of the command: file names, colours, quoting.
#pragma once
#include <filesystem>
#include <string>
#include <string_view>

namespace pixkit::cli {

// File names are UTF-8 in arguments and messages; std::filesystem would read narrow ones in Windows' code page.
std::filesystem::path toPath(std::string_view utf8);
std::string toUtf8(const std::filesystem::path& path);

// ASCII only; other bytes stay.
std::string toLower(std::string_view text);

// A name as a person reads it: control characters, which could steer a terminal or break a line, become \xHH.
std::string shown(std::string_view name);
// The same of a file; an empty name is ''.
std::string shownName(std::string_view file);
// `text` between quotation marks, as JSON has it. A byte that is no UTF-8 becomes the lone surrogate U+DC00 + byte, as
// several languages name such files, so that the name can be had back.
std::string jsonString(std::string_view text);
// `text` as HTML content or as the value of a quoted attribute. What is no UTF-8 becomes U+FFFD.
std::string htmlText(std::string_view text);
// A relative file name as a link: bytes that mean something else in a URL are percent-encoded, slashes stay.
std::string urlPath(std::string_view utf8);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
