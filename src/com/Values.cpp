#include "com/Values.h"
#include "com/Arrays.h"
#include "com/LateBound.h"

namespace pixkit::com {

namespace {

constexpr int deepestDefaults = 8;

bool isSound(const VARIANT& value, int depth, std::size_t& left) noexcept {
    const VARIANT* const found = unwrapped(const_cast<VARIANT*>(&value));
    if (found == nullptr || ((found->vt & VT_BYREF) != 0 && found->byref == nullptr)) return false;
    if ((found->vt & VT_TYPEMASK) == VT_RECORD && (found->vt & VT_ARRAY) == 0) return found->pRecInfo != nullptr;
    if ((found->vt & VT_ARRAY) == 0) return true;
    SAFEARRAY* const array = (found->vt & VT_BYREF) != 0 ? *found->pparray : found->parray;
    if (array == nullptr || !hasElements(array, VT_VARIANT)) return true;
    return depth < deepestArrays && SUCCEEDED(forElements(array, [&](const VARIANT& element, std::size_t) {
               const bool isCounted = depth != 0; // an array that nothing contains is its owner's own affair
               return (!isCounted || left-- != 0) && isSound(element, depth + 1, left) ? S_OK : E_ABORT;
           }));
}

} // namespace

bool isSound(const VARIANT& value) noexcept {
    std::size_t left = mostElements;
    return isSound(value, 0, left);
}

HRESULT copyOf(const VARIANT& value, Variant& copy) noexcept {
    if (!isSound(value)) return DISP_E_TYPEMISMATCH;
    const HRESULT status = ::VariantCopyInd(&copy, unwrapped(const_cast<VARIANT*>(&value)));
    return status == E_INVALIDARG ? DISP_E_BADVARTYPE : status; // as systems differ in calling a type that no value has
}

HRESULT changeType(const VARIANT& value, VARTYPE type, Variant& changed, LCID locale) noexcept {
    const bool isPlain = value.vt <= VT_TYPEMASK && value.vt != VT_DISPATCH && value.vt != VT_RECORD;
    if (isPlain) { // of which there may be many
        return ::VariantChangeTypeEx(&changed, const_cast<VARIANT*>(&value), locale, 0, type);
    }
    Variant plain;
    if (const HRESULT status = copyOf(value, plain); FAILED(status)) return status;
    for (int depth = 0; plain.vt == VT_DISPATCH; ++depth) { // a default property may be an object again
        Variant property;
        if (plain.pdispVal == nullptr || depth == deepestDefaults) return DISP_E_TYPEMISMATCH;
        if (FAILED(defaultProperty(plain.pdispVal, property))) return DISP_E_TYPEMISMATCH;
        std::swap(static_cast<VARIANT&>(plain), static_cast<VARIANT&>(property));
    }
    const HRESULT status = ::VariantChangeTypeEx(&changed, &plain, locale, 0, type);
    return status == E_INVALIDARG ? DISP_E_TYPEMISMATCH : status; // an array that is not there as a string
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
