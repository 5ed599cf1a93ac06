// UTF-8 above the seam, UTF-16 and the narrow code page below it.
#pragma once
#include <string>
#include <string_view>

namespace pixkit::platform {

// Both may throw std::bad_alloc. False for text that is not UTF-8, and for a NUL inside, which would silently shorten
// it.
bool toUtf16(const std::string& utf8, std::wstring& result);
// Text for people to read: what is not UTF-8 is shown byte for byte. May throw std::bad_alloc.
std::wstring shownText(const std::string& text);
// What is not UTF-16 comes out as U+FFFD. May throw std::bad_alloc.
std::string toUtf8(std::wstring_view wide);

// The name of a file. What is not UTF-16 comes out as what is not UTF-8, which no function takes for a name: U+FFFD
// would name another file. May throw std::bad_alloc.
std::string nameToUtf8(std::wstring_view wide);

// Text in the system's narrow code page. False also where it has no such characters: a look-alike would name another
// file.
bool toNarrow(const std::string& utf8, std::string& result);

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
