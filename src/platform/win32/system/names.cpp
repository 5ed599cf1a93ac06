#include "platform/win32/system/names.h"
#include <algorithm>
#include <limits>
// windows.h needs to come last: its macros must not reach the headers above.
#include <windows.h>

namespace pixkit::platform {

namespace {
constexpr std::size_t longestText = std::numeric_limits<int>::max();
}

bool toUtf16(const std::string& utf8, std::wstring& result) {
    result.clear();
    if (utf8.empty()) return true;
    if (utf8.size() > longestText || utf8.find('\0') != std::string::npos) return false;
    const int bytes = static_cast<int>(utf8.size());
    const int units = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), bytes, nullptr, 0);
    if (units <= 0) return false;
    result.resize(static_cast<std::size_t>(units));
    return MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8.data(), bytes, result.data(), units) == units;
}

std::wstring shownText(const std::string& text) {
    std::wstring wide;
    return toUtf16(text, wide) ? wide : std::wstring(text.begin(), text.end());
}

std::string toUtf8(std::wstring_view wide) {
    const int units = static_cast<int>(std::min(wide.size(), longestText));
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, wide.data(), units, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(std::max(bytes, 0)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), units, result.data(), bytes, nullptr, nullptr);
    return result;
}

std::string nameToUtf8(std::wstring_view wide) {
    std::string name = toUtf8(wide);
    std::wstring again;
    if (!toUtf16(name, again) || again != wide) name += '\xFF';
    return name;
}

bool toNarrow(const std::string& utf8, std::string& result) {
    std::wstring wide;
    if (!toUtf16(utf8, wide)) return false;
    if (GetACP() == CP_UTF8) { // the questions about lost characters are refused for this code page
        result = utf8;
        return true;
    }
    result.clear();
    if (wide.empty()) return true;
    const int units = static_cast<int>(wide.size());
    BOOL lost = FALSE;
    const int bytes = WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), units, nullptr, 0, nullptr, &lost);
    if (bytes <= 0 || lost) return false;
    result.resize(static_cast<std::size_t>(bytes));
    return WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), units, result.data(), bytes, nullptr,
                               nullptr) == bytes;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
