// Calls of objects that are known by nothing but the names of their members: hosts' and scripts' own.
#pragma once
#include "com/Automation.h"
#include <span>

namespace pixkit::com {

// object.name(arguments...), or the value of a property, for which there are none. `name` has to be written as scripts
// write it, because some engines tell upper from lower case. What the object raises is an HRESULT like any other;
// `result` is Empty then. What it gives by reference is copied; a reference that leads nowhere is a failure.
HRESULT callByName(IDispatch* object, const wchar_t* name, std::span<const VARIANT> arguments,
                   Variant& result) noexcept;

// What an object stands for where a value is wanted; `result` as above.
HRESULT defaultProperty(IDispatch* object, Variant& result) noexcept;

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
