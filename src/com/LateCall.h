// The arguments of a late-bound call, for the report of an error in it.
#pragma once
#include "com/TypeInformation.h"
#include "diagnostics/ErrorReport.h"

namespace pixkit::com {

// A call on its way through IDispatch::Invoke.
struct LateCall {
    DISPID id;
    const DISPPARAMS* arguments;

    // Adds the arguments, under the names that the type library has for them; nothing when the report is of another
    // member, which some code that the call runs may have called. May throw std::bad_alloc.
    void describe(const TypeInformation& types, ErrorReport& report) const;
};

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
