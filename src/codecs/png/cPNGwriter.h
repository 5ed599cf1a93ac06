// Writes a cPixSheet as PNG (the PNG standard, ISO/IEC 15948). README.md in this folder says which form a picture gets.
#pragma once
#include "shared/ByteArray.h"
#include "shared/PixelView.h"
#include "surface/PngProperties.h"
#include "surface/cPixSheet.h"
#include <cstdint>
#include <string>
#include <vector>

namespace pixkit {

class cPNGwriter {
  public:
    // Writes the smallest of the forms that hold the pixels exactly: gray or palette at 1, 2, 4 or 8 bits, RGB, with a
    // transparent colour or a palette's alphas where these do, gray with alpha, RGBA. Colours are straight, channel *
    // 255 \ alpha. The Alpha property decides whether alpha means something at all. To the file when FileName is not
    // empty, else to outStream, in one dimension from 0, which keeps what it held on failure. False without an image or
    // when the file cannot be written whole.
    static bool SavePNGex(const cPixSheet& cHost, const std::string& FileName, ByteArray& outStream,
                          const PngProperties& props);
    // A PNG file of premultiplied pixels with 8 bits of red, green, blue and alpha, even where less would do.
    static std::vector<std::uint8_t> TrueColorAlpha(ConstPixelView image);
};

} // namespace pixkit
