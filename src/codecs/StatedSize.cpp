#include "codecs/StatedSize.h"
#include "codecs/bmp/BmpInfo.h"
#include "codecs/png/PngHeader.h"
#include "codecs/png/cPNGparser.h"
#include "coding/ByteReader.h"
#include "coding/GifFrame.h"
#include "coding/JpegFrame.h"

namespace pixkit {

namespace {

// Where IHDR is the first chunk, as the PNG standard wants it.
StatedSize sizeOfPng(std::span<const std::uint8_t> start) noexcept {
    const ByteReader reader(start);
    const auto type = reader.bigEndian32(12);
    if (!cPNGparser::IsPNG(start) || type != 0x49484452U) return {}; // "IHDR"
    const auto header = readPngHeader(start.subspan(16));
    if (!header) return {};
    return {static_cast<double>(header->width), static_cast<double>(header->height)};
}

} // namespace

StatedSize statedSize(std::span<const std::uint8_t> start) noexcept {
    Reason unused;
    if (const auto bmp = readBmpInfo(start, unused))
        return {static_cast<double>(bmp->width), static_cast<double>(bmp->height)};
    if (const auto embedded = embeddedPicture(start); !embedded.empty())
        start = embedded; // of which there may be a part
    if (const auto jpeg = readJpegFrame(start))
        return {static_cast<double>(jpeg->width), static_cast<double>(jpeg->height)};
    GifFrame gif;
    findGifFrame(start, gif);
    if (gif.height != 0) return {static_cast<double>(gif.width), static_cast<double>(gif.height)};
    return sizeOfPng(start);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
