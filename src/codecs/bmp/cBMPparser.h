// BMP files. README.md in this folder explains the format and lists what the reader is lenient about.
#pragma once
#include "codecs/Reading.h"
#include "codecs/Writing.h"
#include "surface/PictureNotes.h"
#include <cstdint>
#include <span>

namespace pixkit {

struct BmpInfo;

class cPixSheet;

class cBMPparser {
  public:
    // Reads data that begins with "BM" into the host: 1 to 32 bits a pixel, bit fields, RLE4 and RLE8, bottom-up or
    // top-down. Alpha and ImageType follow from the alpha values where there are any (iparseValidateAlphaChannel), else
    // they are AlphaNone and imgBitmap.
    static ReadResult LoadStream(std::span<const std::uint8_t> Stream, cPixSheet& Host);

    // Why so many bytes from the first pixel on are not worth a store; none where they are.
    static Reason problem(const BmpInfo& info, std::uint64_t bytes) noexcept;
    // What a file that begins so says beside its pixels, for which there are so many bytes.
    static PictureNotes notes(const BmpInfo& info, std::span<const std::uint8_t> start, std::uint64_t bytes) noexcept;

    // A BMP file: BITMAPFILEHEADER, BITMAPINFOHEADER, rows bottom-up padded to four bytes. Without alpha (as the pixels
    // say, not the Alpha property) 24 bits a pixel; with alpha 32 bits, premultiplied as stored, when Keep32bppFormat,
    // else 24 bits flattened onto TransparentFillColor.
    static WrittenFile SaveAsBMP(const SourcePicture& Picture, const BmpOptions& Options);
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
