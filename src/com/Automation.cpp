#include "com/Automation.h"
#include <windows.h>

namespace pixkit::com {

std::string toUtf8(const wchar_t* text) {
    if (text == nullptr || *text == L'\0') return {};
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (size <= 1) return {};
    std::string utf8(static_cast<std::size_t>(size - 1), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text, -1, utf8.data(), size, nullptr, nullptr);
    return utf8;
}

BSTR toBstr(const std::string& utf8) {
    const int bytes = static_cast<int>(utf8.size());
    const int size = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, nullptr, 0);
    const BSTR text = ::SysAllocStringLen(nullptr, static_cast<UINT>(size));
    if (text != nullptr) ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), bytes, text, size);
    return text;
}

} // namespace pixkit::com
