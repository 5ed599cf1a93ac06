// What data objects, from drag and drop or the clipboard, hold of files.
#pragma once
#include "platform/drops.h"
// windows.h needs to come last: its macros must not reach the headers above.
#include <windows.h>

#include <objidl.h>

namespace pixkit::platform {

// Files by their names, or where there are none those that are contents only, whose bytes are asked for when they are
// to be loaded; until then the object is held. What it fails to give is not there. May throw std::bad_alloc.
std::vector<DroppedFile> filesOf(IDataObject* object);

// Those of the object that stands for the system's clipboard, which opens the clipboard itself, time and again. May
// throw std::bad_alloc.
std::vector<DroppedFile> filesOfSystemClipboard();

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
