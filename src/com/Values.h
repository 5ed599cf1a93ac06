// Values of somebody's, which may be anything: what the system's functions would not survive is refused first.
#pragma once
#include "com/Automation.h"

namespace pixkit::com {

// What a value may hold: arrays within each other, and elements of all those together that lie in another one.
inline constexpr int deepestArrays = 8;
inline constexpr std::size_t mostElements = std::size_t{1} << 25;

// Whether the system's functions can copy and convert a value: they follow references that lead nowhere, and arrays
// that contain themselves.
bool isSound(const VARIANT& value) noexcept;

// A copy of a value that is sound, references followed; else DISP_E_TYPEMISMATCH, or DISP_E_BADVARTYPE.
HRESULT copyOf(const VARIANT& value, Variant& copy) noexcept;

// A value as one of another type; of an object its default property. DISP_E_TYPEMISMATCH for what is not sound.
HRESULT changeType(const VARIANT& value, VARTYPE type, Variant& changed, LCID locale = LOCALE_USER_DEFAULT) noexcept;

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
