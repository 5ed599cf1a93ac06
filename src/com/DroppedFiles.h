// What hosts hand over as dropped, whatever they have.
#pragma once
#include "com/Automation.h"
#include "platform/drops.h"
#include <vector>

namespace pixkit::com {

// The files of a drop: a number that is an HDROP; a data object (IDataObject); an object with a property Files, which
// gives one of the following; a collection with Count and Item, counted from 0 or from 1, or with length and properties
// 0, 1 and so on, as arrays of some scripts are; an array of strings; a string. Each of them may stand in a variable.
//
// The names in collections and arrays are strings; what else is there, and empty strings, are passed over. An object
// that fails gives what it gave so far. None for everything else. May throw std::bad_alloc.
std::vector<DroppedFile> droppedFiles(const VARIANT& data);

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
