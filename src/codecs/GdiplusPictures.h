// Pictures that GDI+ decodes and encodes, as images of the component.
#pragma once
#include "codecs/Reading.h"
#include "codecs/Writing.h"

namespace pixkit {

class cGDIPlus;

// Has GDI+ decode a picture into a host, premultiplied as all readers do it; Alpha follows from the alpha bytes, which
// may mean nothing where they are all 0 (`mayBeUnused`). ImageType is imgPNG. Refused, and the host empty, where GDI+
// does not know the data or the picture is too large, and where GDI+ is not enabled for the host. May throw.
ReadResult DecodeByGDIplus(std::span<const std::uint8_t> Stream, cPixSheet& Host, bool mayBeUnused);
// The reader of what no other reader knows: of it, only the PNG can be kept that GDI+ makes of the picture, and so the
// picture counts as one.
ReadResult LoadByGDIplus(std::span<const std::uint8_t> Stream, cPixSheet& Host);

// A JPEG file of a picture, flattened as cJPGWriter would; nothing where GDI+ does not write it as it is asked.
WrittenFile SaveToJPGByGDIplus(cGDIPlus& cGDIp, const SourcePicture& Picture, const JpgOptions& Options);
// A PNG file of a picture.
WrittenFile SaveToPNGByGDIplus(cGDIPlus& cGDIp, const SourcePicture& Picture);

} // namespace pixkit
// SPDX-License-Identifier: MIT
