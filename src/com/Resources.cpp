#include "com/Resources.h"
#include "com/Arrays.h"
#include "com/LateBound.h"
#include "com/Values.h"
#include "platform/gdi.h"
#include "platform/icons.h"
#include "platform/win32/pictures/OlePicture.h"
#include <algorithm>
#include <ocidl.h>
#include <windows.h>

namespace pixkit::com {

namespace {

using Use = std::function<bool(const ByteArray&)>;

// host.function(index, section). What the host raises only means that there is nothing.
HRESULT callHost(IDispatch* host, const wchar_t* function, const VARIANT& index, const VARIANT& section,
                 Variant& result) {
    const VARIANT arguments[] = {index, section};
    return callByName(host, function, arguments, result);
}

bool withHostResource(IDispatch* host, VARIANT& index, VARIANT& section, const Use& use) {
    Variant value;
    if (FAILED(callHost(host, L"LoadResData", index, section, value))) return false;
    if (value.vt == (VT_ARRAY | VT_VARIANT)) { // from a host written in script
        SAFEARRAY* bytes = nullptr;
        if (FAILED(arrayFromVariants(value.parray, VT_UI1, LOCALE_INVARIANT, &bytes))) return false;
        ::VariantClear(&value);
        value.vt = VT_ARRAY | VT_UI1;
        value.parray = bytes;
    }
    if (value.vt != (VT_ARRAY | VT_UI1)) return false;
    const CallersBytes array(&value.parray, CallersBytes::Access::read);
    return array.isUsable() && use(array.bytes());
}

// As the system's functions want it; null for neither a number nor a name.
const wchar_t* resourceName(VARIANT& index) {
    if (index.vt == VT_BSTR) return index.bstrVal;
    Variant number;
    return SUCCEEDED(changeType(index, VT_UI2, number)) ? MAKEINTRESOURCEW(number.uiVal) : nullptr;
}

bool withProgramResource(VARIANT& index, VARIANT& section, const Use& use) {
    const wchar_t* const name = resourceName(index);
    if (name == nullptr || section.bstrVal == nullptr) return false;
    const HMODULE program = ::GetModuleHandleW(nullptr);
    const HRSRC resource = ::FindResourceW(program, name, section.bstrVal);
    const HGLOBAL loaded = resource != nullptr ? ::LoadResource(program, resource) : nullptr;
    auto* const data = loaded != nullptr ? static_cast<std::uint8_t*>(::LockResource(loaded)) : nullptr;
    // Borrowed from the program's own image, which stays where it is.
    return data != nullptr && use(ByteArray::borrow(data, {0, ::SizeofResource(program, resource)}));
}

// `kind` counts as the system's IMAGE_BITMAP, IMAGE_ICON and IMAGE_CURSOR do.
std::unique_ptr<platform::StdPicture> programPicture(VARIANT& index, LONG kind, int iconCx, int iconCy) {
    const wchar_t* const name = resourceName(index);
    if (name == nullptr || kind < IMAGE_BITMAP || kind > IMAGE_CURSOR) return nullptr;
    const bool isBitmap = kind == IMAGE_BITMAP;
    const HANDLE image =
        ::LoadImageW(::GetModuleHandleW(nullptr), name, static_cast<UINT>(kind), isBitmap ? 0 : std::max(iconCx, 0),
                     isBitmap ? 0 : std::max(iconCy, 0), isBitmap ? LR_CREATEDIBSECTION : LR_DEFAULTCOLOR);
    const auto handle = reinterpret_cast<platform::Handle>(image);
    const auto type = isBitmap ? platform::PictureType::bitmap : platform::PictureType::icon;
    auto picture = image != nullptr ? platform::OleCreatePictureIndirect(handle, type, true) : nullptr;
    if (image != nullptr && !picture) isBitmap ? platform::DeleteObject(handle) : platform::DestroyIcon(handle);
    return picture;
}

} // namespace

bool isCustomResource(VARIANT& section) {
    Variant plain;
    return SUCCEEDED(copyOf(section, plain)) && plain.vt == VT_BSTR;
}

std::unique_ptr<platform::StdPicture> pictureOf(IUnknown* object) {
    return platform::wrapPicture(interfaceOf<IPicture>(object, IID_IPicture).get());
}

IPictureDisp* pictureDispOf(const platform::StdPicture& picture) {
    void* found = nullptr;
    const HRESULT status = platform::pictureBehind(picture)->QueryInterface(IID_IPictureDisp, &found);
    return SUCCEEDED(status) ? static_cast<IPictureDisp*>(found) : nullptr;
}

std::unique_ptr<platform::StdPicture> resourcePicture(VARIANT& index, VARIANT& section, IDispatch* host, int iconCx,
                                                      int iconCy) {
    Variant plainIndex, plainSection, kind; // references followed
    if (FAILED(copyOf(index, plainIndex)) || FAILED(copyOf(section, plainSection)) ||
        FAILED(changeType(plainSection, VT_I4, kind)))
        return nullptr;
    if (host == nullptr) return programPicture(plainIndex, kind.lVal, iconCx, iconCy);
    Variant value;
    if (FAILED(callHost(host, L"LoadResPicture", plainIndex, kind, value))) return nullptr;
    return value.vt == VT_DISPATCH || value.vt == VT_UNKNOWN ? pictureOf(value.punkVal) : nullptr;
}

bool withResource(VARIANT& index, VARIANT& section, IDispatch* host, const Use& use) {
    Variant plainIndex, plainSection; // references followed
    if (FAILED(copyOf(index, plainIndex)) || FAILED(copyOf(section, plainSection))) return false;
    if (plainSection.vt != VT_BSTR) return false;
    return host != nullptr ? withHostResource(host, plainIndex, plainSection, use)
                           : withProgramResource(plainIndex, plainSection, use);
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
