// Writes a cPixSheet as a JPEG file. README.md in this folder explains the format and what is chosen here.
#pragma once
#include "codecs/Writing.h"

namespace pixkit {

class cJPGWriter {
  public:
    // Whether the picture has no more columns and rows than readers take: libjpeg, which most programs have, ends at
    // 65,500, a little below what the format's 16 bits could say.
    static bool fits(ConstPixelView image) noexcept { return image.width <= 65500 && image.height <= 65500; }
    // A baseline JPEG file (ITU-T T.81; JFIF 1.02). Transparency, as the pixels say, is flattened onto
    // TransparentFillColor (a COLORREF). Quality 1 (smallest) to 100 (best); values outside count as the nearer end.
    // Chroma has half the picture's width and height below quality 90, a picture in grays no chroma at all. Nothing for
    // what does not fit.
    static WrittenFile SaveAsJPG(const SourcePicture& Picture, const JpgOptions& Options);
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
