// Late-bound calls: from IDispatch::Invoke to a member of the virtual function table.
#pragma once
#include "com/TypeInformation.h"

namespace pixkit::com {

// Calls the member of `object` (an interface laid out as the type information says). Arguments are normalised first,
// so that everything a typed caller could pass is taken from scripts too; what cannot be gives a DISP_E_ error, with
// the argument's index in *argumentError.
HRESULT invoke(const TypeInformation& types, IDispatch* object, DISPID id, LCID locale, WORD flags,
               DISPPARAMS* arguments, VARIANT* result, UINT* argumentError) noexcept;

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
