#include "com/LateBound.h"
#include "com/Values.h"
#include <algorithm>
#include <array>
#include <dispex.h>

namespace pixkit::com {

namespace {

constexpr std::size_t mostArguments = 4;

// Objects of some script engines know names through IDispatchEx only, which others do not have.
HRESULT findName(IDispatch* object, const wchar_t* name, DISPID& id) noexcept {
    auto* names = const_cast<wchar_t*>(name);
    const HRESULT status = object->GetIDsOfNames(IID_NULL, &names, 1, LOCALE_USER_DEFAULT, &id);
    if (SUCCEEDED(status)) return status;
    const auto extended = interfaceOf<IDispatchEx>(object);
    if (!extended) return status;
    Variant text;
    text.bstrVal = ::SysAllocString(name);
    if (text.bstrVal == nullptr) return E_OUTOFMEMORY;
    text.vt = VT_BSTR;
    return extended->GetDispID(text.bstrVal, fdexNameCaseInsensitive, &id);
}

HRESULT invoke(IDispatch* object, DISPID id, WORD flags, DISPPARAMS& arguments, Variant& result) noexcept {
    EXCEPINFO exception{};
    Variant found;
    const HRESULT status =
        object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &arguments, &found, &exception, nullptr);
    ::SysFreeString(exception.bstrSource);
    ::SysFreeString(exception.bstrDescription);
    ::SysFreeString(exception.bstrHelpFile);
    return SUCCEEDED(status) ? copyOf(found, result) : status;
}

} // namespace

HRESULT defaultProperty(IDispatch* object, Variant& result) noexcept {
    DISPPARAMS none{};
    return invoke(object, DISPID_VALUE, DISPATCH_PROPERTYGET, none, result);
}

HRESULT callByName(IDispatch* object, const wchar_t* name, std::span<const VARIANT> arguments,
                   Variant& result) noexcept {
    if (arguments.size() > mostArguments) return DISP_E_BADPARAMCOUNT;
    DISPID id = 0;
    if (const HRESULT status = findName(object, name, id); FAILED(status)) return status;
    std::array<VARIANTARG, mostArguments> reversed; // copies of the caller's, not owned
    std::ranges::reverse_copy(arguments, reversed.begin());
    DISPPARAMS passed{reversed.data(), nullptr, static_cast<UINT>(arguments.size()), 0};
    const HRESULT status = invoke(object, id, DISPATCH_METHOD | DISPATCH_PROPERTYGET, passed, result);
    // Some script engines take that for a call, and a value that is no function cannot be called.
    if (SUCCEEDED(status) || status == DISP_E_EXCEPTION || !arguments.empty()) return status;
    return invoke(object, id, DISPATCH_PROPERTYGET, passed, result);
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
