// One argument of a late-bound call, brought into the form that the member takes, and its result brought back.
//
// Callers pass the same thing in many forms: numbers of any type, strings that are numbers, variables by reference
// (VT_BYREF|VT_VARIANT), arrays of VARIANT for arrays of bytes, objects as IDispatch or IUnknown, nothing at all. What
// the system's own DispInvoke does with these differs between systems, so nothing is left to it.
#pragma once
#include "com/TypeInformation.h"
#include <vector>

namespace pixkit::com {

class Argument {
  public:
    Argument() noexcept { ::VariantInit(&m_call); }
    ~Argument();
    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;

    // `passed` is null for an argument that was left out. A DISP_E_ error when it cannot be what the member takes.
    HRESULT bind(const Parameter& parameter, VARIANTARG* passed, LCID locale) noexcept;
    // What the member gets: a VARIANT that DispCallFunc takes as one of type callType().
    VARIANTARG* forCall() noexcept { return m_variant != nullptr ? m_variant : &m_call; }
    VARTYPE callType() const noexcept { return m_variant != nullptr ? VARTYPE{VT_VARIANT} : m_call.vt; }
    // After the call: gives what the member changed back to the caller's variable, in the form the variable has.
    HRESULT giveBack(LCID locale) noexcept;

  private:
    HRESULT bindMissing(const Parameter& parameter) noexcept;
    HRESULT bindValue(VARTYPE type, LCID locale) noexcept;
    HRESULT bindReference(VARTYPE type, LCID locale) noexcept;
    HRESULT bindObject(const Parameter& parameter) noexcept;
    HRESULT bindArray(VARTYPE type, LCID locale) noexcept;
    HRESULT bindVariantArray(VARTYPE type, LCID locale) noexcept;
    void passOwnArray(VARTYPE type) noexcept;
    HRESULT keepBytes() noexcept;
    bool isArrayChanged() const noexcept;
    HRESULT giveBackReference(LCID locale) noexcept;
    HRESULT giveBackObject() noexcept;
    HRESULT giveBackArray() noexcept;
    HRESULT replaceVariable(Variant& value) noexcept;
    HRESULT putBack() noexcept;

    VARIANTARG* m_source = nullptr; // what the caller passed, references to VARIANT followed; null = missing
    VARIANTARG m_passed = {};       // what it was before other arguments' objects were called
    bool m_isVariable = false;      // m_source is a variable of the caller's that may be overwritten
    VARIANTARG* m_variant = nullptr;
    VARIANTARG m_call;

    enum class Returns { nothing, reference, object, array } m_returns = Returns::nothing;
    Variant m_local; // the argument when it is not the caller's own, and what it was before the call
    VARIANT m_before = {};
    SAFEARRAY* m_array = nullptr; // what the member works on when it is not the caller's; owned unless lent
    SAFEARRAY* m_arrayBefore = nullptr;
    std::vector<std::uint8_t> m_bytesBefore; // of m_array: a member may fill the same array anew
    SAFEARRAY* m_lent = nullptr;             // the caller's, passed by value
    SAFEARRAY* m_locked = nullptr;           // to be unlocked after the call
    SAFEARRAY** m_variants = nullptr;        // the caller's array of VARIANT by reference, to be replaced
    bool m_isTaken = false;                  // m_array is that of the caller's variable
    VARTYPE m_type = VT_EMPTY;
};

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
