// BMP files. README.md in this folder explains the format and lists what the reader is lenient about.
#pragma once
#include "shared/ByteArray.h"
#include <cstdint>
#include <span>
#include <string>

namespace pixkit {

class cPixSheet;

class cBMPparser {
  public:
    // Reads a BMP file into the host: 1 to 32 bits a pixel, bit fields, RLE4 and RLE8, bottom-up or top-down. Alpha and
    // ImageType follow from the alpha values where there are any (iparseValidateAlphaChannel), else they are AlphaNone
    // and imgBitmap. False, with nothing done, for data that does not begin with "BM", or that holds no picture that
    // can be read; false and an empty host when there is no memory for its pixels.
    static bool LoadStream(std::span<const std::uint8_t> Stream, cPixSheet& Host);

    // Writes the host as a BMP file (BITMAPFILEHEADER, BITMAPINFOHEADER, rows bottom-up padded to four bytes) to
    // `FileName`, or into `outStream`, one dimension from 0, when the name is empty. Without alpha (as the pixels say,
    // not the Alpha property) 24 bits a pixel; with alpha 32 bits, premultiplied as stored, when Keep32bppFormat, else
    // 24 bits flattened onto TransparentFillColor. False without an image or when the file cannot be created or written
    // whole.
    static bool SaveAsBMP(const cPixSheet& cHost, const std::string& FileName, ByteArray& outStream,
                          bool Keep32bppFormat, std::int32_t TransparentFillColor);
};

} // namespace pixkit
