#include "com/Automation.h"
#include "platform/win32/system/names.h"

namespace pixkit::com {

VARIANT* unwrapped(VARIANT* value) noexcept {
    for (int depth = 0; depth < 8 && value != nullptr && value->vt == (VT_BYREF | VT_VARIANT); ++depth)
        value = value->pvarVal;
    return value;
}

std::string toUtf8(const wchar_t* text) {
    return text != nullptr ? platform::toUtf8(text) : std::string();
}

std::string allToUtf8(BSTR text) {
    return platform::toUtf8({text, ::SysStringLen(text)});
}

std::string nameToUtf8(const wchar_t* name) {
    return name != nullptr ? platform::nameToUtf8(name) : std::string();
}

BSTR toBstr(const std::string& utf8) {
    std::wstring wide;
    if (!platform::toUtf16(utf8, wide)) return nullptr;
    return ::SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
}

} // namespace pixkit::com
