// Pictures that the system decodes or draws: what its loader reads, bitmaps by their handle, metafiles.
#pragma once
#include "codecs/Reading.h"
#include "platform/handle.h"

namespace pixkit {

namespace platform {
class StdPicture;
}

// Offers data to the system's picture loader, and takes over the picture that it makes of it.
ReadResult LoadSystemPicture(std::span<const std::uint8_t> Stream, cPixSheet& Host);

// Takes over the pixels of a bitmap, or draws a metafile at its natural size (imgWMF, imgEMF): opaque where it draws,
// transparent where it does not. Refuses pictures of other types, and where there is no memory.
Outcome ConvertstdPicTo32bpp(const platform::StdPicture& Picture, cPixSheet& Host);
// The same for a bitmap's handle. Alpha and ImageType follow from the alpha bytes where there are any
// (iparseValidateAlphaChannel), else they are AlphaNone and imgBitmap.
Outcome ConvertstdPicTo32bpp(platform::Handle hBitmap, cPixSheet& Host);

} // namespace pixkit
// SPDX-License-Identifier: MIT
