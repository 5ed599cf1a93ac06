// Writes a cPixSheet as PNG (the PNG standard, ISO/IEC 15948). README.md in this folder says which form a picture gets.
#pragma once
#include "codecs/Writing.h"
#include "shared/PixelView.h"
#include "surface/PngProperties.h"
#include <cstdint>
#include <vector>

namespace pixkit {

class cPNGwriter {
  public:
    // A PNG file in the smallest of the forms that hold the pixels exactly: gray or palette at 1, 2, 4 or 8 bits, RGB,
    // with a transparent colour or a palette's alphas where these do, gray with alpha, RGBA. Colours are straight
    // and rounded up, so that a reader's truncation finds those that were stored. The Alpha property decides whether
    // alpha means something at all.
    static WrittenFile SavePNGex(const SourcePicture& Picture, const PngProperties& props);
    // A PNG file of premultiplied pixels with 8 bits of red, green, blue and alpha, even where less would do.
    static std::vector<std::uint8_t> TrueColorAlpha(ConstPixelView image);
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
