// BMP files, and pictures that the system decodes. README.md in this folder explains the format and lists what the
// reader is lenient about.
#pragma once
#include "codecs/Writing.h"
#include "platform/handle.h"
#include <cstdint>
#include <span>

namespace pixkit {

class cPixSheet;
namespace platform {
class StdPicture;
}

class cBMPparser {
  public:
    // Reads a BMP file into the host: 1 to 32 bits a pixel, bit fields, RLE4 and RLE8, bottom-up or top-down. Alpha and
    // ImageType follow from the alpha values where there are any (iparseValidateAlphaChannel), else they are AlphaNone
    // and imgBitmap. Data that does not begin with "BM" goes to LoadSystemPicture. False when there is no picture that
    // can be read, or no memory for its pixels; then the host is empty.
    static bool LoadStream(std::span<const std::uint8_t> Stream, cPixSheet& Host);

    // Offers data in any other format, but PNG, GIF and icons, to the system's picture loader, and takes over the
    // picture that it makes of it. False, and an empty host, when it makes none.
    static bool LoadSystemPicture(std::span<const std::uint8_t> Stream, cPixSheet& Host);

    // Takes over the pixels of a bitmap, with Alpha and ImageType as in LoadStream, or draws a metafile at its natural
    // size (imgWMF, imgEMF): opaque where it draws, transparent where it does not. False, and an empty host, for
    // pictures of other types and when there is no memory.
    static bool ConvertstdPicTo32bpp(const platform::StdPicture& Picture, cPixSheet& Host);
    // The same for a bitmap's handle.
    static bool ConvertstdPicTo32bpp(platform::Handle hBitmap, cPixSheet& Host);

    // A BMP file: BITMAPFILEHEADER, BITMAPINFOHEADER, rows bottom-up padded to four bytes. Without alpha (as the pixels
    // say, not the Alpha property) 24 bits a pixel; with alpha 32 bits, premultiplied as stored, when Keep32bppFormat,
    // else 24 bits flattened onto TransparentFillColor.
    static WrittenFile SaveAsBMP(const SourcePicture& Picture, const BmpOptions& Options);
};

} // namespace pixkit
