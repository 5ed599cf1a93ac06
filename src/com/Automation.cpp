#include "com/Automation.h"
#include "platform/win32/system/names.h"
#include <new>

namespace pixkit::com {

void* queried(IUnknown* object, REFIID id) noexcept {
    static constexpr IID unheardOf = {0x3f0c1d0e, 0x5b7a, 0x4e63, {0x9d, 0x21, 0x6a, 0x8e, 0x40, 0xb5, 0x17, 0xc9}};
    if (object == nullptr) return nullptr;
    // Held: while it is asked the first time, it may empty the variable or the element that was its last owner.
    ComPtr<IUnknown> held;
    held.hold(object);
    void* found = nullptr;
    if (SUCCEEDED(object->QueryInterface(unheardOf, &found))) {
        if (found == object) object->Release();
        return nullptr;
    }
    found = nullptr;
    return SUCCEEDED(object->QueryInterface(id, &found)) ? found : nullptr;
}

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
    const BSTR text = ::SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    if (text == nullptr) throw std::bad_alloc(); // to callers it would be an empty string
    return text;
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
