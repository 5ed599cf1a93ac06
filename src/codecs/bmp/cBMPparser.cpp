#include "codecs/bmp/cBMPparser.h"
#include "coding/ByteWriter.h"
#include "coding/RowBytes.h"
#include "kernels/kernels.h"
#include "shared/AlphaChannel.h"
#include "shared/Colors.h"
#include <span>
#include <utility>
#include <vector>

namespace pixkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes makeHeader(ConstPixelView image, unsigned bitCount, std::size_t imageSize) {
    constexpr std::size_t headerSize = 54;
    Bytes header;
    ByteWriter out(header);
    out.text("BM");
    out.littleEndian32(headerSize + imageSize);
    out.zeros(4);
    out.littleEndian32(headerSize); // where the pixels begin
    out.littleEndian32(40);         // biSize
    out.littleEndian32(image.width);
    out.littleEndian32(image.height); // positive: bottom-up
    out.littleEndian16(1);            // biPlanes
    out.littleEndian16(bitCount);
    out.littleEndian32(0); // biCompression
    out.littleEndian32(imageSize);
    out.zeros(headerSize - out.size());
    return header;
}

// 24 bits a pixel.
Bytes opaqueRows(ConstPixelView image) {
    const auto length = static_cast<std::size_t>(paddedRowBytes(image.width, 24));
    Bytes rows(length * image.height);
    for (std::size_t y = 0; y < image.height; ++y)
        kernels::table().pack24(&rows[y * length], image.row(y), image.width, false);
    return rows;
}

Bytes flattenedRows(ConstPixelView image, std::int32_t fillColor) {
    Bytes rows(static_cast<std::size_t>(paddedRowBytes(image.width, 24)) * image.height);
    iparseBlendImageToColor(image, fillColor, rows, true);
    return rows;
}

} // namespace

WrittenFile cBMPparser::SaveAsBMP(const SourcePicture& Picture, const BmpOptions& Options) {
    const ConstPixelView image = Picture.pixels;
    if (!image) return refused(noImage);
    const bool hasAlpha = iparseHasAlpha(image);
    FileParts file;
    if (hasAlpha && Options.Keep32bppFormat) {
        const std::span pixels(image.bits, image.stride * image.height); // as they are stored
        file.add(makeHeader(image, 32, pixels.size()));
        file.addView(pixels);
    } else {
        Bytes rows = hasAlpha ? flattenedRows(image, Options.TransparentFillColor) : opaqueRows(image);
        file.add(makeHeader(image, 24, rows.size()));
        file.add(std::move(rows));
    }
    return file;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
