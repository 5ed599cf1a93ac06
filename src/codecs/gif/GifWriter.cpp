// Writing: the blocks of a file around palette and coded indexes.
#include "codecs/gif/cGIFparser.h"
#include "codecs/palette/IndexedPicture.h"
#include "coding/lzw/LzwEncoder.h"
#include "shared/modParsers.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <bit>
#include <string_view>

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
    const auto put = [&](std::size_t byte) { file.push_back(static_cast<std::uint8_t>(byte)); };
    const auto putWord = [&](std::size_t word) {
        put(word & 0xFF);
        put(word >> 8);
    };
    for (const char c : std::string_view(picture.transparentIndex ? "GIF89a" : "GIF87a"))
        put(static_cast<std::uint8_t>(c));
    // Logical screen: a colour table of depth bits, made of colours of eight bits a channel; its background.
    putWord(width);
    putWord(height);
    put(0x80 | 7 << 4 | (depth - 1));
    put(transparent);
    put(0); // pixels of no stated shape
    for (const IndexedPicture::Color& color : picture.palette) {
        for (const std::uint8_t channel : color)
            put(channel);
    }
    file.resize(file.size() + ((std::size_t{1} << depth) - picture.palette.size()) * 3);
    if (picture.transparentIndex) {
        for (const unsigned byte : {0x21U, 0xF9U, 4U, 1U, 0U, 0U, unsigned{transparent}, 0U}) // graphic control
            put(byte);
    }
    put(0x2C); // the picture covers the screen, has no table of its own, and is not interlaced
    putWord(0);
    putWord(0);
    putWord(width);
    putWord(height);
    put(0);
    gifCompress(picture.indexes, depth, file);
    put(0x3B);
    return file;
}

} // namespace

bool cGIFparser::SaveAsGIF(const cPixSheet& cHost, const std::string& FileName, ByteArray& outStream,
                           bool UseAdaptivePalette, std::uint8_t OpaquenessTolerance) {
    const ConstPixelView image = HostAccess::pixels(cHost);
    if (!image || image.width > largestSide || image.height > largestSide) return false;
    StraightRows rows(image, cHost.Alpha() != AlphaNone, OpaquenessTolerance);
    Bytes file = makeFile(makePicture(rows, UseAdaptivePalette), image.width, image.height);
    return iparseDeliver(std::move(file), FileName, (HostAccess::osCAP(cHost) & capNtFamily) != 0, outStream);
}

} // namespace pixkit
