#include "codecs/clipboard/PackedDib.h"
#include "codecs/bmp/BmpInfo.h"
#include "codecs/bmp/cBMPparser.h"
#include "coding/ByteReader.h"
#include "coding/ByteWriter.h"
#include "kernels/kernels.h"
#include <algorithm>
#include <cstring>
#include <utility>

namespace pixkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t fileHeaderSize = 14;
constexpr std::uint32_t v5HeaderSize = 124; // BITMAPV5HEADER
constexpr std::size_t masksAt = 40;
constexpr std::size_t masksSize = 12;

// Where the pixels begin. By the rules they follow header, masks and colours. Between may stand, where there is room
// for it: a second copy of the masks that a long header already has, which some systems put there when they make one
// kind of bitmap of another, and the colour profile, which others put there instead of behind the pixels.
std::size_t findPixels(const ByteReader& dib, const BmpInfo& info) {
    const std::size_t headerSize = dib.littleEndian32(0).value_or(0);
    const std::uint64_t rows =
        info.isRunLength() ? 1 : std::uint64_t{info.rowBytes()} * static_cast<std::uint64_t>(info.height);
    std::size_t position = info.pixelOffset;
    const auto isRoomFor = [&](std::uint64_t between) { return between + rows <= dib.size() - position; };

    const auto masks = dib.slice(masksAt, masksSize), copy = dib.slice(headerSize, masksSize);
    const bool hasMasks = info.compression == BmpCompression::bitFields && headerSize >= masksAt + masksSize;
    if (hasMasks && masks && copy && std::ranges::equal(*masks, *copy) && isRoomFor(masksSize)) position += masksSize;

    if (headerSize < v5HeaderSize) return position;
    const std::uint32_t profileAt = dib.littleEndian32(112).value_or(0),
                        profileSize = dib.littleEndian32(116).value_or(0);
    return profileAt == position && isRoomFor(profileSize) ? position + profileSize : position;
}

} // namespace

Bytes bmpFileOf(Bytes&& dib) {
    const auto info = readDibInfo(dib);
    if (!info) return {};
    const std::size_t pixels = fileHeaderSize + findPixels(ByteReader(dib), *info);
    Bytes header;
    ByteWriter out(header);
    out.text("BM");
    out.littleEndian32(fileHeaderSize + dib.size());
    out.zeros(4);
    out.littleEndian32(pixels);
    dib.insert(dib.begin(), header.begin(), header.end());
    return std::move(dib);
}

Bytes makeStraightDib(const SourcePicture& picture) {
    const ConstPixelView image = picture.pixels;
    constexpr std::uint32_t bitFields = 3, sRgb = 0x73524742, forPictures = 4; // BI_, LCS_sRGB, LCS_GM_IMAGES
    const std::size_t rowSize = image.width * 4;
    const std::size_t size = v5HeaderSize + rowSize * image.height;
    Bytes dib;
    dib.reserve(size);
    ByteWriter out(dib);
    out.littleEndian32(v5HeaderSize);
    out.littleEndian32(image.width);
    out.littleEndian32(image.height); // positive: bottom-up
    out.littleEndian16(1);            // planes
    out.littleEndian16(32);
    out.littleEndian32(bitFields);
    out.littleEndian32(size - v5HeaderSize);
    out.zeros(masksAt - out.size());
    for (const std::uint32_t mask : {0xFF0000U, 0xFF00U, 0xFFU, 0xFF000000U})
        out.littleEndian32(mask);
    out.littleEndian32(sRgb);
    out.zeros(108 - out.size()); // end points and gamma, which sRGB does not need
    out.littleEndian32(forPictures);
    out.zeros(size - out.size());

    for (std::size_t y = 0; y < image.height; ++y) {
        std::uint8_t* const row = &dib[v5HeaderSize + y * rowSize];
        if (picture.alpha == AlphaNone) {
            std::memcpy(row, image.row(y), rowSize);
            kernels::table().setOpaque(row, image.width);
        } else {
            kernels::table().unpremultiply(row, image.row(y), image.width);
        }
    }
    return dib;
}

Bytes makeFlatDib(const SourcePicture& picture, std::int32_t fillColor) {
    auto file = cBMPparser::SaveAsBMP(picture, {.Keep32bppFormat = false, .TransparentFillColor = fillColor});
    Bytes dib = std::move(file.parts()).join();
    dib.erase(dib.begin(), dib.begin() + std::min<std::ptrdiff_t>(fileHeaderSize, std::ssize(dib)));
    return dib;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
