#include "com/LateCall.h"
#include "com/Automation.h"
#include "diagnostics/words.h"
#include <algorithm>
#include <array>

namespace pixkit::com {

namespace {

// No object is asked anything and no array is copied: hosts' code does not run for a report.
std::string inWords(VARIANT* argument) {
    constexpr UINT longest = 100; // more is cut in any case, and may be too much for the memory that is left
    VARIANT* const value = unwrapped(argument);
    if (value == nullptr || value->vt == VT_ERROR) return "left out";
    if ((value->vt & VT_ARRAY) != 0) return "an array";
    const bool isReference = (value->vt & VT_BYREF) != 0;
    if (isReference && value->byref == nullptr) return "Nothing";
    switch (value->vt & VT_TYPEMASK) {
    case VT_EMPTY:
    case VT_NULL:
        return "Empty";
    case VT_BSTR: {
        const BSTR text = isReference ? *value->pbstrVal : value->bstrVal;
        return textInWords(toUtf8(std::wstring(text, std::min(::SysStringLen(text), longest)).c_str()));
    }
    case VT_BOOL:
        return pixkit::inWords((isReference ? *value->pboolVal : value->boolVal) != VARIANT_FALSE);
    case VT_DISPATCH:
    case VT_UNKNOWN:
        return pixkit::inWords(isReference ? *value->ppunkVal : value->punkVal);
    case VT_VARIANT:
        return "something";
    default:
        break;
    }
    Variant text;
    if (FAILED(::VariantChangeType(&text, value, VARIANT_NOUSEROVERRIDE, VT_BSTR))) return "something";
    return toUtf8(text.bstrVal);
}

} // namespace

void LateCall::describe(const TypeInformation& types, ErrorReport& report) const {
    std::array<BSTR, maximumParameters + 1> names{}; // the member's, then those of its parameters
    UINT count = 0;
    types.interfaceInfo()->GetNames(id, names.data(), static_cast<UINT>(names.size()), &count);
    std::array<Variant, names.size()> owners;
    for (UINT i = 0; i < count; ++i) {
        owners[i].vt = VT_BSTR;
        owners[i].bstrVal = names[i];
    }
    // The accessors of a property are called get_Name and put_Name.
    if (count == 0 || !report.procedure.ends_with(toUtf8(names[0]))) return;
    for (UINT i = 0; i < arguments->cArgs; ++i) {
        // Named arguments come first and say their place; the others stand in reverse order.
        const UINT last = arguments->cArgs - 1 - i;
        const bool isNamed = last < arguments->cNamedArgs;
        const UINT place = isNamed ? static_cast<UINT>(arguments->rgdispidNamedArgs[last]) : i;
        const std::string name = place < count - 1 ? toUtf8(names[place + 1]) : "value";
        report.parameters.push_back({name, inWords(&arguments->rgvarg[last])});
    }
}

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
