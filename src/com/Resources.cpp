#include "com/Resources.h"
#include "com/Arrays.h"
#include "com/Automation.h"
#include <windows.h>

namespace pixkit::com {

namespace {

using Use = std::function<bool(const ByteArray&)>;

// host.LoadResData(index, section). What the host raises only means that there is nothing.
HRESULT callLoadResData(IDispatch* host, VARIANT& index, VARIANT& section, VARIANT& result) {
    wchar_t name[] = L"LoadResData";
    wchar_t* names[] = {name};
    DISPID id = 0;
    if (const HRESULT status = host->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id); FAILED(status))
        return status;
    VARIANTARG reversed[] = {section, index}; // copies of the caller's, not owned
    DISPPARAMS arguments{reversed, nullptr, 2, 0};
    EXCEPINFO exception{};
    const HRESULT status = host->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                                        &arguments, &result, &exception, nullptr);
    ::SysFreeString(exception.bstrSource);
    ::SysFreeString(exception.bstrDescription);
    ::SysFreeString(exception.bstrHelpFile);
    return status;
}

bool withHostResource(IDispatch* host, VARIANT& index, VARIANT& section, const Use& use) {
    Variant found, value;
    if (FAILED(callLoadResData(host, index, section, found)) || FAILED(::VariantCopyInd(&value, &found))) return false;
    if (value.vt == (VT_ARRAY | VT_VARIANT)) { // from a host written in script
        SAFEARRAY* bytes = nullptr;
        if (FAILED(arrayFromVariants(value.parray, VT_UI1, LOCALE_INVARIANT, &bytes))) return false;
        ::VariantClear(&value);
        value.vt = VT_ARRAY | VT_UI1;
        value.parray = bytes;
    }
    if (value.vt != (VT_ARRAY | VT_UI1)) return false;
    const InputArray array(value.parray);
    return array.isUsable() && use(array.bytes());
}

bool withProgramResource(VARIANT& index, VARIANT& section, const Use& use) {
    Variant number;
    const wchar_t* name = index.bstrVal;
    if (index.vt != VT_BSTR) {
        if (FAILED(::VariantChangeType(&number, &index, 0, VT_UI2))) return false;
        name = MAKEINTRESOURCEW(number.uiVal);
    }
    if (name == nullptr || section.bstrVal == nullptr) return false;
    const HMODULE program = ::GetModuleHandleW(nullptr);
    const HRSRC resource = ::FindResourceW(program, name, section.bstrVal);
    const HGLOBAL loaded = resource != nullptr ? ::LoadResource(program, resource) : nullptr;
    auto* const data = loaded != nullptr ? static_cast<std::uint8_t*>(::LockResource(loaded)) : nullptr;
    // Borrowed from the program's own image, which stays where it is.
    return data != nullptr && use(ByteArray::borrow(data, {0, ::SizeofResource(program, resource)}));
}

} // namespace

bool withResource(VARIANT& index, VARIANT& section, IDispatch* host, const Use& use) {
    Variant plainIndex, plainSection; // references followed
    if (FAILED(::VariantCopyInd(&plainIndex, &index)) || FAILED(::VariantCopyInd(&plainSection, &section)))
        return false;
    if (plainSection.vt != VT_BSTR) return false;
    return host != nullptr ? withHostResource(host, plainIndex, plainSection, use)
                           : withProgramResource(plainIndex, plainSection, use);
}

} // namespace pixkit::com
