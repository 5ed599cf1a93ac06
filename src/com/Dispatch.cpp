#include "com/Dispatch.h"
#include "com/Argument.h"
#include "com/Values.h"

namespace pixkit::com {

namespace {

using Passed = std::array<VARIANTARG*, maximumParameters>; // by parameter; null = left out

// All positional arguments from the last parameter on, for a member that takes any number of them.
HRESULT gatherRest(const Member& member, const DISPPARAMS& arguments, Variant& rest) noexcept {
    const auto fixed = static_cast<UINT>(member.parameters.size() - 1);
    const UINT positional = arguments.cArgs - arguments.cNamedArgs;
    if (positional <= fixed) return S_OK;
    SAFEARRAY* const array = ::SafeArrayCreateVector(VT_VARIANT, 0, positional - fixed);
    if (array == nullptr) return E_OUTOFMEMORY;
    rest.vt = VT_ARRAY | VT_VARIANT;
    rest.parray = array;
    auto* element = static_cast<VARIANT*>(array->pvData);
    for (UINT i = fixed; i < positional; ++i, ++element) {
        Variant copy;
        const HRESULT status = copyOf(arguments.rgvarg[arguments.cArgs - 1 - i], copy);
        if (FAILED(status)) return status;
        *element = copy.detach();
    }
    return S_OK;
}

// Named arguments come first, positional ones after them in reverse. A property's value has a name of its own.
// `rest` becomes the last parameter of a member that takes any number of arguments.
HRESULT sortArguments(const Member& member, DISPPARAMS& arguments, Passed& passed, Variant& rest,
                      UINT* argumentError) noexcept {
    const std::size_t count = member.parameters.size();
    if ((arguments.cArgs > count && !member.takesAnyNumber) || arguments.cNamedArgs > arguments.cArgs)
        return DISP_E_BADPARAMCOUNT;
    for (UINT i = 0; i < arguments.cNamedArgs; ++i) {
        const DISPID name = arguments.rgdispidNamedArgs[i];
        const bool isPut = name == DISPID_PROPERTYPUT && member.kind != INVOKE_FUNC && count != 0;
        const std::size_t position = isPut ? count - 1 : static_cast<std::size_t>(name);
        if (position >= count || passed[position] != nullptr) {
            if (argumentError != nullptr) *argumentError = i;
            return DISP_E_PARAMNOTFOUND;
        }
        passed[position] = &arguments.rgvarg[i];
    }
    for (UINT i = arguments.cNamedArgs; i < arguments.cArgs; ++i) {
        const std::size_t position = arguments.cArgs - 1 - i;
        if (member.takesAnyNumber && position >= count - 1) continue;
        if (passed[position] != nullptr) return DISP_E_BADPARAMCOUNT; // given by name too
        passed[position] = &arguments.rgvarg[i];
    }
    if (!member.takesAnyNumber) return S_OK;
    const HRESULT status = gatherRest(member, arguments, rest);
    if (FAILED(status) || rest.vt == VT_EMPTY) return status;
    if (passed[count - 1] != nullptr) return DISP_E_BADPARAMCOUNT; // given by name too
    passed[count - 1] = &rest;
    return S_OK;
}

// One call of the virtual function table. A VARIANT result is written as a whole, others behind the VARIANT's type.
HRESULT call(IDispatch* object, const Member& member, std::array<Argument, maximumParameters>& arguments,
             Variant& result) noexcept {
    std::array<VARTYPE, maximumParameters + 1> types;
    std::array<VARIANTARG*, maximumParameters + 1> values;
    UINT count = 0;
    for (; count < member.parameters.size(); ++count) {
        types[count] = arguments[count].callType();
        values[count] = arguments[count].forCall();
    }
    VARIANTARG place;
    if (member.hasResult) {
        const bool whole = member.result.kind == Parameter::Kind::variant;
        if (!whole) result.vt = member.result.type;
        place.vt = static_cast<VARTYPE>(VT_BYREF | member.result.type);
        place.byref = whole ? static_cast<void*>(&result) : &result.byref;
        types[count] = place.vt;
        values[count++] = &place;
    }
    VARIANT returned;
    const HRESULT status =
        ::DispCallFunc(object, member.tableOffset, CC_STDCALL, VT_I4, count, types.data(), values.data(), &returned);
    return FAILED(status) ? status : returned.lVal;
}

// Late-bound callers use an object through its IDispatch and know no other interface; Nothing is one of that kind too.
HRESULT resultForCaller(const Member& member, Variant& result) noexcept {
    if (member.result.kind != Parameter::Kind::object) return S_OK;
    if (result.punkVal != nullptr) return ::VariantChangeType(&result, &result, 0, VT_DISPATCH);
    result.vt = VT_DISPATCH;
    return S_OK;
}

} // namespace

HRESULT invoke(const TypeInformation& types, IDispatch* object, DISPID id, LCID locale, WORD flags,
               DISPPARAMS* arguments, VARIANT* result, UINT* argumentError) noexcept {
    if (result != nullptr) ::VariantInit(result);
    if (arguments == nullptr) return E_POINTER;
    if ((arguments->cArgs != 0 && arguments->rgvarg == nullptr) ||
        (arguments->cNamedArgs != 0 && arguments->rgdispidNamedArgs == nullptr)) {
        return E_INVALIDARG;
    }
    const Member* const member = types.find(id, flags);
    if (member == nullptr) return DISP_E_MEMBERNOTFOUND;

    Passed passed{};
    Variant rest;
    if (const HRESULT status = sortArguments(*member, *arguments, passed, rest, argumentError); FAILED(status))
        return status;
    std::array<Argument, maximumParameters> bound;
    for (std::size_t i = 0; i < member->parameters.size(); ++i) {
        const HRESULT status = bound[i].bind(member->parameters[i], passed[i], locale);
        if (SUCCEEDED(status)) continue;
        if (argumentError != nullptr && passed[i] != nullptr && passed[i] != &rest)
            *argumentError = static_cast<UINT>(passed[i] - arguments->rgvarg);
        return status;
    }

    Variant returned;
    HRESULT status = call(object, *member, bound, returned);
    if (FAILED(status)) {
        returned.detach(); // nothing was stored in it
        return status;
    }
    status = resultForCaller(*member, returned);
    // The member has done its work: every argument gets its value back and the caller the result, whatever one of them
    // cannot hold.
    for (std::size_t i = 0; i < member->parameters.size(); ++i) {
        const HRESULT given = bound[i].giveBack(locale);
        if (SUCCEEDED(given) || FAILED(status)) continue;
        status = given;
        if (argumentError != nullptr && passed[i] != nullptr && passed[i] != &rest)
            *argumentError = static_cast<UINT>(passed[i] - arguments->rgvarg);
    }
    if (result != nullptr) *result = returned.detach();
    return status;
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
