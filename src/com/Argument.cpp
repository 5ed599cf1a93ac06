#include "com/Argument.h"
#include "com/Arrays.h"
#include "com/Values.h"
#include <cstring>

namespace pixkit::com {

namespace {

constexpr VARTYPE arrayOf(VARTYPE type) noexcept {
    return static_cast<VARTYPE>(VT_ARRAY | type);
}

constexpr VARTYPE referenceTo(VARTYPE type) noexcept {
    return static_cast<VARTYPE>(VT_BYREF | type);
}

constexpr VARTYPE withoutReference(VARTYPE type) noexcept {
    return static_cast<VARTYPE>(type & ~VT_BYREF);
}

// Bytes of a number behind a reference; 0 for everything else.
std::size_t numberSize(VARTYPE type) noexcept {
    const bool isNumber =
        type != VT_ERROR && type != VT_BSTR && type != VT_DISPATCH && type != VT_UNKNOWN && type != VT_VARIANT;
    return isNumber ? elementSize(type) : 0;
}

bool isLeftOut(const VARIANTARG* passed) noexcept {
    return passed == nullptr || (passed->vt == VT_ERROR && passed->scode == DISP_E_PARAMNOTFOUND);
}

bool isObject(VARTYPE type) noexcept {
    return type == VT_DISPATCH || type == VT_UNKNOWN;
}

void zero(VARIANT& value, VARTYPE type) noexcept {
    std::memset(&value, 0, sizeof value);
    value.vt = type;
}

} // namespace

Argument::~Argument() {
    if (m_locked != nullptr) ::SafeArrayUnlock(m_locked);
    if (m_isTaken) putBack(); // of a call that was not made
    if (m_array != nullptr && m_array != m_lent) ::SafeArrayDestroy(m_array);
}

HRESULT Argument::bind(const Parameter& parameter, VARIANTARG* passed, LCID locale) noexcept {
    m_type = parameter.type;
    if (VARIANTARG* const value = unwrapped(passed); value != passed) {
        if (value == nullptr) return DISP_E_TYPEMISMATCH;
        passed = value;
        m_isVariable = true;
    }
    if (isLeftOut(passed)) {
        if (!parameter.isOptional) return passed == nullptr ? DISP_E_BADPARAMCOUNT : DISP_E_PARAMNOTOPTIONAL;
        m_isVariable = false;
        return bindMissing(parameter);
    }
    if (!isSound(*passed)) return DISP_E_TYPEMISMATCH;
    if (passed->vt == referenceTo(VT_EMPTY) || passed->vt == referenceTo(VT_NULL)) return DISP_E_BADVARTYPE;
    m_source = passed;
    m_passed = *passed;
    switch (parameter.kind) {
    case Parameter::Kind::value:
        return bindValue(parameter.type, locale);
    case Parameter::Kind::variant:
        m_variant = m_source;
        return S_OK;
    case Parameter::Kind::variantReference:
        m_call.vt = referenceTo(VT_VARIANT);
        m_call.pvarVal = m_source;
        return S_OK;
    case Parameter::Kind::reference:
        return bindReference(parameter.type, locale);
    case Parameter::Kind::object:
    case Parameter::Kind::objectReference:
        return bindObject(parameter);
    case Parameter::Kind::arrayReference:
        return bindArray(parameter.type, locale);
    }
    return DISP_E_TYPEMISMATCH;
}

HRESULT Argument::bindMissing(const Parameter& parameter) noexcept {
    zero(m_call, parameter.type);
    switch (parameter.kind) {
    case Parameter::Kind::variant:
        m_call.vt = VT_ERROR;
        m_call.scode = DISP_E_PARAMNOTFOUND;
        m_variant = &m_call;
        return S_OK;
    case Parameter::Kind::variantReference:
        m_local.vt = VT_ERROR;
        m_local.scode = DISP_E_PARAMNOTFOUND;
        m_call.vt = referenceTo(VT_VARIANT);
        m_call.pvarVal = &m_local;
        return S_OK;
    case Parameter::Kind::value:
        if (parameter.defaultValue) m_call = *parameter.defaultValue; // lives as long as the description
        return S_OK;
    case Parameter::Kind::object:
        return S_OK;
    case Parameter::Kind::arrayReference:
        passOwnArray(parameter.type);
        return S_OK;
    case Parameter::Kind::reference:
    case Parameter::Kind::objectReference:
        zero(m_local, parameter.type);
        if (parameter.defaultValue) static_cast<VARIANT&>(m_local) = *parameter.defaultValue; // a number
        m_call.vt = referenceTo(parameter.type);
        m_call.byref = &m_local.byref;
        return S_OK;
    }
    return DISP_E_TYPEMISMATCH;
}

// Strings are copied: the code of an object among the other arguments may free the caller's.
HRESULT Argument::bindValue(VARTYPE type, LCID locale) noexcept {
    if (m_source->vt == type && type != VT_BSTR) {
        m_call = *m_source;
        return S_OK;
    }
    const HRESULT status = changeType(*m_source, type, m_local, locale);
    m_call = m_local;
    return status;
}

HRESULT Argument::bindReference(VARTYPE type, LCID locale) noexcept {
    if (m_source->vt == referenceTo(type)) {
        m_call = *m_source;
        return S_OK;
    }
    const VARTYPE found = withoutReference(m_source->vt);
    if ((m_source->vt & VT_BYREF) != 0 && numberSize(found) == 0) return DISP_E_TYPEMISMATCH;
    if (const HRESULT status = changeType(*m_source, type, m_local, locale); FAILED(status)) return status;
    m_before = m_local;
    m_call.vt = referenceTo(type);
    m_call.byref = &m_local.byref;
    m_returns = Returns::reference;
    return S_OK;
}

HRESULT Argument::bindObject(const Parameter& parameter) noexcept {
    const VARTYPE found = withoutReference(m_source->vt);
    IUnknown* object = nullptr;
    if (isObject(found)) {
        object = (m_source->vt & VT_BYREF) != 0 ? *m_source->ppunkVal : m_source->punkVal;
    } else if (found != VT_EMPTY) {
        return DISP_E_TYPEMISMATCH;
    }
    zero(m_local, VT_UNKNOWN);
    m_local.punkVal = static_cast<IUnknown*>(queried(object, parameter.interfaceId));
    if (object != nullptr && m_local.punkVal == nullptr) return DISP_E_TYPEMISMATCH;
    m_before = m_local;
    m_call = m_local;
    if (parameter.kind == Parameter::Kind::objectReference) {
        m_call.vt = referenceTo(VT_UNKNOWN);
        m_call.byref = &m_local.byref;
        m_returns = Returns::object;
    }
    return S_OK;
}

void Argument::passOwnArray(VARTYPE type) noexcept {
    m_call.vt = referenceTo(arrayOf(type));
    m_call.pparray = &m_array;
}

HRESULT Argument::bindArray(VARTYPE type, LCID locale) noexcept {
    const bool isReference = (m_source->vt & VT_BYREF) != 0;
    const VARTYPE found = withoutReference(m_source->vt);
    if (found == VT_EMPTY) { // a variable that holds nothing yet
        passOwnArray(type);
        m_returns = Returns::array;
        return S_OK;
    }
    if (found == arrayOf(VT_VARIANT) && type != VT_VARIANT) return bindVariantArray(type, locale);
    if (found != arrayOf(type)) return DISP_E_TYPEMISMATCH;
    if (isReference) { // the member works on the caller's array itself
        m_call = *m_source;
        return S_OK;
    }
    if (m_isVariable) { // likewise, but the variable may become anything while objects of others are called
        m_array = m_source->parray;
        ::VariantInit(m_source);
        m_isTaken = true;
        m_returns = Returns::array;
        passOwnArray(type);
        return S_OK;
    }
    // Passed by value: lent to the member, and locked, so that it cannot be replaced under the caller.
    if (m_source->parray != nullptr) {
        if (const HRESULT status = ::SafeArrayLock(m_source->parray); FAILED(status)) return status;
        m_locked = m_source->parray;
    }
    m_array = m_lent = m_source->parray;
    passOwnArray(type);
    return S_OK;
}

HRESULT Argument::bindVariantArray(VARTYPE type, LCID locale) noexcept {
    SAFEARRAY** const place = (m_source->vt & VT_BYREF) != 0 ? m_source->pparray : nullptr;
    SAFEARRAY* const variants = place != nullptr ? *place : m_source->parray;
    if (const HRESULT status = arrayFromVariants(variants, type, locale, &m_array); FAILED(status)) return status;
    m_arrayBefore = m_array;
    if (const HRESULT status = keepBytes(); FAILED(status)) return status;
    passOwnArray(type);
    if ((place != nullptr || m_isVariable) && (variants == nullptr || isReplaceable(variants))) {
        m_variants = place;
        m_returns = Returns::array;
    } else if (m_array != nullptr && SUCCEEDED(::SafeArrayLock(m_array))) {
        m_locked = m_array; // the member must see that what it returns could not be stored
    }
    return S_OK;
}

HRESULT Argument::keepBytes() noexcept try {
    if (m_array != nullptr) m_bytesBefore = bytesOf(m_array);
    return S_OK;
} catch (...) {
    return E_OUTOFMEMORY;
}

bool Argument::isArrayChanged() const noexcept {
    if (m_array != m_arrayBefore) return true;
    return m_array != nullptr && std::memcmp(m_array->pvData, m_bytesBefore.data(), m_bytesBefore.size()) != 0;
}

HRESULT Argument::giveBack(LCID locale) noexcept {
    switch (m_returns) {
    case Returns::nothing:
        return S_OK;
    case Returns::reference:
        return giveBackReference(locale);
    case Returns::object:
        return giveBackObject();
    case Returns::array:
        return giveBackArray();
    }
    return S_OK;
}

// Whatever it holds by now, which stays where it is a locked array.
HRESULT Argument::replaceVariable(Variant& value) noexcept {
    const HRESULT status = ::VariantClear(m_source);
    if (SUCCEEDED(status)) *m_source = value.detach();
    return status;
}

// Gives the variable its array, which the member may have replaced.
HRESULT Argument::putBack() noexcept {
    m_isTaken = false;
    Variant value;
    value.parray = std::exchange(m_array, nullptr);
    if (value.parray != nullptr) value.vt = arrayOf(m_type); // scripts cannot look into an array that is not there
    return replaceVariable(value);
}

HRESULT Argument::giveBackReference(LCID locale) noexcept {
    const std::size_t size = numberSize(m_type);
    // A variable that the member left alone keeps its type; an empty one learns that it is a zero.
    const bool changed = std::memcmp(&m_local.byref, &m_before.byref, size) != 0 || m_source->vt == VT_EMPTY;
    if (!changed) return S_OK;
    if ((m_passed.vt & VT_BYREF) == 0) return m_isVariable ? replaceVariable(m_local) : S_OK;
    const VARTYPE type = withoutReference(m_passed.vt);
    Variant converted;
    const HRESULT status = ::VariantChangeTypeEx(&converted, &m_local, locale, 0, type);
    if (SUCCEEDED(status)) std::memcpy(m_passed.byref, &converted.byref, numberSize(type));
    return status;
}

HRESULT Argument::giveBackObject() noexcept {
    const bool isReference = (m_passed.vt & VT_BYREF) != 0;
    if (m_local.punkVal == m_before.punkVal || (!isReference && !m_isVariable)) return S_OK;
    const bool asUnknown = m_passed.vt == referenceTo(VT_UNKNOWN);
    Variant object;
    if (m_local.punkVal != nullptr) {
        const HRESULT status = m_local.punkVal->QueryInterface(asUnknown ? IID_IUnknown : IID_IDispatch,
                                                               reinterpret_cast<void**>(&object.punkVal));
        if (FAILED(status)) return status;
    }
    object.vt = VT_DISPATCH;
    if (!isReference) return replaceVariable(object);
    if (IUnknown* const replaced = std::exchange(*m_passed.ppunkVal, object.detach().punkVal)) replaced->Release();
    return S_OK;
}

HRESULT Argument::giveBackArray() noexcept {
    if (m_isTaken) return putBack();
    if (!isArrayChanged()) return S_OK;
    Variant variants;
    if (const HRESULT status = variantsFromArray(m_array, m_type, &variants.parray); FAILED(status)) return status;
    if (variants.parray != nullptr) variants.vt = arrayOf(VT_VARIANT);
    if (m_variants == nullptr) return m_isVariable ? replaceVariable(variants) : S_OK;
    if (*m_variants != nullptr && FAILED(::SafeArrayDestroy(*m_variants))) return DISP_E_ARRAYISLOCKED;
    *m_variants = variants.detach().parray;
    return S_OK;
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
