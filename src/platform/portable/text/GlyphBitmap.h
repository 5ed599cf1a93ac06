// Glyphs of fonts that have bitmaps, black and white, gray, or pictures in colour.
#pragma once
#include "platform/portable/text/SubpixelMask.h"

namespace pixkit::platform {

// What such a glyph covers, scaled; of a picture in colour, its alpha. Loads it into the face's slot. Empty where there
// is none. May throw std::bad_alloc.
Subpixels lookOfBitmap(FT_Face face, std::uint32_t index, double scale);

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
