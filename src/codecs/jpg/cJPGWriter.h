// Writes a cPixSheet as a JPEG file. README.md in this folder explains the format and what is chosen here.
#pragma once
#include "shared/ByteArray.h"
#include <cstdint>
#include <string>

namespace pixkit {

class cPixSheet;

class cJPGWriter {
  public:
    // Writes the host as a baseline JPEG file (ITU-T T.81; JFIF 1.02) to `FileName`, or into `outStream`, one dimension
    // from 0, when the name is empty. Transparency, as the pixels say, is flattened onto TransparentFillColor (a
    // COLORREF). Quality 1 (smallest) to 100 (best); values outside count as the nearer end. Chroma has half the
    // picture's width and height below quality 90, a picture in grays no chroma at all. False without an image, for
    // more than 65,535 columns or rows, or when the file cannot be created or written whole; outStream then keeps what
    // it held.
    static bool SaveAsJPG(const cPixSheet& cHost, const std::string& FileName, ByteArray& outStream,
                          std::int32_t Quality, std::int32_t TransparentFillColor);
};

} // namespace pixkit
