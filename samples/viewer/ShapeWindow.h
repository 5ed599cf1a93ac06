// A window without a frame that has the picture's shape.
#pragma once
#include "Sheet.h"

namespace viewer {

// Hides the owner and leaves only the picture on the desktop, its top left corner at a point of the screen, until
// somebody ends that by a key or a double click. Empty, or why there is no such window.
std::wstring showShapeWindow(HWND owner, const Sheet& picture, POINT corner, double zoom);

} // namespace viewer
// SPDX-License-Identifier: MIT
