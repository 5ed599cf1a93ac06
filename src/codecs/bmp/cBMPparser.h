// BMP files.
#pragma once
#include "shared/ByteArray.h"
#include <cstdint>
#include <string>

namespace pixkit {

class cPixSheet;

class cBMPparser {
  public:
    // Writes the host as a BMP file (BITMAPFILEHEADER, BITMAPINFOHEADER, rows bottom-up padded to four bytes) to
    // `FileName`, or into `outStream`, one dimension from 0, when the name is empty. Without alpha (as the pixels say,
    // not the Alpha property) 24 bits a pixel; with alpha 32 bits, premultiplied as stored, when Keep32bppFormat, else
    // 24 bits flattened onto TransparentFillColor. False without an image or when the file cannot be created or written
    // whole.
    static bool SaveAsBMP(const cPixSheet& cHost, const std::string& FileName, ByteArray& outStream,
                          bool Keep32bppFormat, std::int32_t TransparentFillColor);
};

} // namespace pixkit
