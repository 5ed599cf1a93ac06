// Bitmaps of the system's that are made of pictures.
#pragma once
#include "codecs/Writing.h"
#include "platform/gdi.h"
#include "shared/enumerations.h"

namespace pixkit {

// A DIB section with a copy of the pixels, rows bottom-up, for whoever gets the handle:
// - pictPremultiplied: 32 bits, as stored.
// - pictStraight: 32 bits, colours by GetPixel's rule, clear pixels 0, 0, 0, 0.
// - pictFlat: flattened onto a colour at 24 bits, which all systems and programs take for opaque. A fourth byte is
//   alpha to some of them, and to others nothing.
// With AlphaNone the alpha bytes mean nothing, and are 255. Refuses other styles, and where there is no memory.
Outcome makeBitmap(const SourcePicture& picture, std::int32_t style, std::int32_t backColor,
                   platform::UniqueBitmap& bitmap);

} // namespace pixkit
// SPDX-License-Identifier: MIT
