// The images and sizes of an icon file, and options of formats, in the forms in which callers give them.
#pragma once
#include "com/Automation.h"
#include "pixkit_com.h"
#include "surface/cPixSheet.h"
#include <vector>

namespace pixkit::com {

// An object, or an array of them of any kind and any dimensions, by value or by reference; Nothing, Empty, Null and
// what was left out is none. False for anything else.
bool collectSheets(const VARIANT& source, std::vector<ComPtr<_cPixSheet>>& sheets);

// Numbers of any type, three for each size: width, height, bit depth. They may be in arrays, which are taken in the
// order of memory, so that of two dimensions the first runs from width to depth; if it has a fourth element, as that of
// SourceIconSizes has, this is passed over. False for what is no number, and when a number is missing.
bool collectIconSizes(SAFEARRAY* sizes, std::vector<IconEntrySize>& entries);

// The options of a format: numbers of any type and Booleans, in arrays or not, as above. False for anything else, and
// for what was left out between others.
bool collectOptions(SAFEARRAY** options, std::vector<std::int32_t>& numbers);

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
