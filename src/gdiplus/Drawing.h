// How GDI+ is made to draw, whether it then is right or not.
#pragma once
#include "gdiplus/cGDIPlus.h"

namespace pixkit {

// False when a call fails; what was drawn before that stays.
bool drawByGdiplus(const platform::GdiplusApi& api, const GdiplusDrawing& drawing) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
