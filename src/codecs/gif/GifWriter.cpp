// Writing: the blocks of a file around palette and coded indexes.
#include "codecs/gif/cGIFparser.h"
#include "codecs/palette/IndexedPicture.h"
#include "coding/ByteWriter.h"
#include "coding/lzw/LzwEncoder.h"
#include <algorithm>
#include <bit>

namespace pixkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t largestSide = 65535;

IndexedPicture makePicture(StraightRows& rows, bool useAdaptivePalette) {
    if (!useAdaptivePalette) return webSafePicture(rows);
    if (auto exact = exactPicture(rows)) return std::move(*exact);
    return adaptivePicture(rows);
}

Bytes makeFile(const IndexedPicture& picture, std::size_t width, std::size_t height) {
    // Bits of an index; the table has so many entries, those that are not used being black.
    const unsigned depth = std::max(1U, static_cast<unsigned>(std::bit_width(picture.palette.size() - 1)));
    const std::uint8_t transparent = picture.transparentIndex.value_or(0);
    Bytes file;
    ByteWriter out(file);
    out.text(picture.transparentIndex ? "GIF89a" : "GIF87a");
    // Logical screen: a colour table of depth bits, made of colours of eight bits a channel; its background.
    out.littleEndian16(width);
    out.littleEndian16(height);
    out.byte(0x80U | 7U << 4 | (depth - 1));
    out.byte(transparent);
    out.byte(0); // pixels of no stated shape
    for (const IndexedPicture::Color& color : picture.palette)
        out.bytes(color);
    out.zeros(((std::size_t{1} << depth) - picture.palette.size()) * 3);
    if (picture.transparentIndex) out.bytes({0x21, 0xF9, 4, 1, 0, 0, transparent, 0}); // graphic control
    out.byte(0x2C); // the picture covers the screen, has no table of its own, and is not interlaced
    out.littleEndian16(0);
    out.littleEndian16(0);
    out.littleEndian16(width);
    out.littleEndian16(height);
    out.byte(0);
    gifCompress(picture.indexes, depth, file);
    out.byte(0x3B);
    return file;
}

} // namespace

WrittenFile cGIFparser::SaveAsGIF(const SourcePicture& Picture, const GifOptions& Options) {
    const ConstPixelView image = Picture.pixels;
    if (!image) return refused(noImage);
    if (image.width > largestSide || image.height > largestSide) return refused(tooLargeForFormat);
    StraightRows rows(image, Picture.alpha != AlphaNone, Options.OpaquenessTolerance);
    return FileParts(makeFile(makePicture(rows, Options.UseAdaptivePalette), image.width, image.height));
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
