// Device-independent bitmaps as the clipboard holds them: BMP files without the first 14 bytes, which say where the
// pixels begin.
#pragma once
#include "codecs/Writing.h"
#include <cstdint>
#include <vector>

namespace pixkit {

// The BMP file of a CF_DIB or CF_DIBV5 block, for the BMP reader. The block may be longer or shorter than its header
// says. Empty when the header describes no picture that can be read.
std::vector<std::uint8_t> bmpFileOf(std::vector<std::uint8_t>&& dib);

// A CF_DIBV5 block: BITMAPV5HEADER, 32 bits a pixel as bit fields with an alpha mask, sRGB, bottom-up. Colours are
// straight, by GetPixel's rule, because all who read alpha there take them so. With AlphaNone the alpha bytes mean
// nothing, and are 255.
std::vector<std::uint8_t> makeStraightDib(const SourcePicture& picture);
// A CF_DIB block, which has no alpha: BITMAPINFOHEADER, 24 bits a pixel, bottom-up, flattened onto a colour.
std::vector<std::uint8_t> makeFlatDib(const SourcePicture& picture, std::int32_t fillColor);

} // namespace pixkit
// SPDX-License-Identifier: MIT
