#include "codecs/bmp/BmpInfo.h"
#include "coding/ByteReader.h"
#include "coding/RowBytes.h"
#include <algorithm>
#include <limits>

namespace pixkit {

namespace {

constexpr std::size_t fileHeaderSize = 14;
constexpr std::size_t compressionAt = 30;    // of a file, in the headers from 40 bytes on
constexpr std::uint32_t coreHeaderSize = 12; // BITMAPCOREHEADER
constexpr std::uint32_t infoHeaderSize = 40; // BITMAPINFOHEADER
constexpr std::uint32_t headerSizeWithMasks = 52;
constexpr std::uint32_t headerSizeWithAlphaMask = 56;
// OS/2 2.x: its full header, and the least that a shortened one holds.
constexpr std::uint32_t os2HeaderSize = 64;
constexpr std::uint32_t shortestOs2HeaderSize = 16;

constexpr bool isOs2(std::uint32_t headerSize) noexcept {
    return headerSize < infoHeaderSize || headerSize == os2HeaderSize;
}

void readCoreHeader(const ByteReader& header, BmpInfo& info) {
    info.width = header.littleEndian16(4).value_or(0);
    info.height = header.littleEndian16(6).value_or(0);
    info.bitCount = header.littleEndian16(10).value_or(0);
}

// Fields beyond the end of a shortened header are 0.
void readInfoHeader(const ByteReader& header, BmpInfo& info) {
    info.width = static_cast<std::int32_t>(header.littleEndian32(4).value_or(0));
    const auto biHeight = static_cast<std::int32_t>(header.littleEndian32(8).value_or(0));
    info.isTopDown = biHeight < 0;
    // The lowest number has no positive counterpart: no height then.
    const bool isLowest = biHeight == std::numeric_limits<std::int32_t>::min();
    info.height = isLowest ? 0 : info.isTopDown ? -biHeight : biHeight;
    info.bitCount = header.littleEndian16(14).value_or(0);
    info.compression = BmpCompression{header.littleEndian32(16).value_or(0)};
}

// No more pixels than a store has bytes for: 4 each, counted in 31 bits.
bool fitsStore(const BmpInfo& info) {
    return std::int64_t{info.width} * info.height <= std::numeric_limits<std::int32_t>::max() / 4;
}

bool isDepthSuited(const BmpInfo& info) {
    switch (info.compression) {
    case BmpCompression::rgb: {
        constexpr std::array<unsigned, 8> bitCounts = {1, 2, 4, 8, 16, 24, 32, 64};
        return std::ranges::count(bitCounts, info.bitCount) != 0;
    }
    case BmpCompression::rle8:
        return info.bitCount == 8;
    case BmpCompression::rle4:
        return info.bitCount == 4;
    case BmpCompression::bitFields:
    case BmpCompression::alphaBitFields:
        return info.bitCount == 16 || info.bitCount == 32;
    case BmpCompression::jpeg:
    case BmpCompression::png:
        break; // embeddedPicture finds them
    }
    return false;
}

// What is wrong with what a header says; none where all is well.
Reason headerProblem(const BmpInfo& info, std::uint32_t headerSize) {
    // OS/2 has other methods under the numbers above 2.
    const bool isKnown =
        info.compression <= BmpCompression::bitFields || info.compression == BmpCompression::alphaBitFields;
    if (!isKnown || (isOs2(headerSize) && info.compression > BmpCompression::rle4))
        return "BMP: a compression that is not read"; // also JPEG or PNG where no such file is embedded
    if (info.width <= 0 || info.height <= 0) return "BMP: no valid width or height";
    if (!fitsStore(info)) return "BMP: more pixels than an image can hold";
    if (!isDepthSuited(info)) return "BMP: no valid number of bits a pixel";
    return {};
}

// Settles the masks and moves `position` over those that stand between header and palette. False when they are not all
// there.
bool readMasks(const ByteReader& file, std::size_t headerStart, std::size_t headerSize, std::size_t& position,
               BmpInfo& info) {
    const bool isWide = info.bitCount == 32;
    const BmpMasks usual = isWide ? BmpMasks{0xFF0000, 0xFF00, 0xFF, 0} : BmpMasks{0x7C00, 0x3E0, 0x1F, 0};
    info.masks = usual;
    if (info.compression == BmpCompression::rgb) {
        // The fourth byte has no meaning by the format, and many programs keep alpha there: its values decide.
        if (isWide) info.masks.alpha = 0xFF000000;
        return true;
    }
    const bool areInHeader = headerSize >= headerSizeWithMasks;
    const bool hasAlphaMask =
        areInHeader ? headerSize >= headerSizeWithAlphaMask : info.compression == BmpCompression::alphaBitFields;
    const std::size_t start = areInHeader ? headerStart + infoHeaderSize : position;
    const std::size_t count = hasAlphaMask ? 4 : 3;
    if (!file.slice(start, count * 4)) return false;
    if (!areInHeader) position += count * 4;
    const auto mask = [&](std::size_t index) {
        const std::uint32_t value = index < count ? file.littleEndian32(start + index * 4).value_or(0) : 0;
        return isWide ? value : value & 0xFFFF;
    };
    info.masks = {mask(0), mask(1), mask(2), mask(3)};
    if ((info.masks.red | info.masks.green | info.masks.blue) == 0) {
        const std::uint32_t alpha = info.masks.alpha;
        info.masks = usual; // masks that were left out
        info.masks.alpha = alpha;
    }
    return true;
}

struct PaletteExtent {
    std::size_t start;
    std::uint64_t entries; // as declared, which may be more than indexes reach
    std::size_t entrySize;
    std::uint64_t end() const noexcept { return start + entries * entrySize; }
};

PaletteExtent declaredPalette(const ByteReader& file, const ByteReader& header, std::size_t start, unsigned bitCount) {
    const std::uint64_t indexes = bitCount <= 8 ? std::uint64_t{1} << bitCount : 0;
    if (header.size() == coreHeaderSize) return {start, indexes, 3};
    const std::uint32_t biClrUsed = header.littleEndian32(32).value_or(0);
    PaletteExtent palette{start, biClrUsed == 0 ? indexes : biClrUsed, 4};
    if (palette.end() > file.size()) palette.entries = indexes; // not to be believed
    return palette;
}

// bfOffBits is taken at its word unless it points into the headers or out of the file; or to where too little is left
// for the rows, or before the palette's first entry, while behind the palette there is enough for them.
std::size_t findPixels(const ByteReader& file, const PaletteExtent& palette, const BmpInfo& info) {
    const std::uint64_t bfOffBits = file.littleEndian32(10).value_or(0);
    const std::uint64_t size = file.size();
    const std::uint64_t afterPalette = std::min(palette.end(), size);
    if (bfOffBits < palette.start || bfOffBits >= size) return static_cast<std::size_t>(afterPalette);
    const std::uint64_t rows = std::uint64_t{info.rowBytes()} * static_cast<std::uint64_t>(info.height);
    const bool isBehindPalette = info.isRunLength() ? size > afterPalette : size - afterPalette >= rows;
    const bool isTooFar = !info.isRunLength() && size - bfOffBits < rows;
    const bool isTooNear = info.bitCount <= 8 && bfOffBits < palette.start + palette.entrySize;
    return static_cast<std::size_t>(isBehindPalette && (isTooFar || isTooNear) ? afterPalette : bfOffBits);
}

// A palette ends at the latest where the pixels begin: files with few colours leave the others out.
void readPalette(const ByteReader& file, const PaletteExtent& extent, BmpInfo& info) {
    const std::size_t room = (info.pixelOffset - std::min(info.pixelOffset, extent.start)) / extent.entrySize;
    const auto entries = static_cast<std::size_t>(std::min<std::uint64_t>({extent.entries, room, 256}));
    for (std::size_t i = 0; i < 256; ++i) {
        std::uint8_t* pixel = &info.palette[i * 4];
        if (i < entries) {
            if (const auto entry = file.slice(extent.start + i * extent.entrySize, 3)) {
                std::ranges::copy(*entry, pixel);
            }
        }
        pixel[3] = 255;
    }
}

} // namespace

std::size_t BmpInfo::rowBytes() const noexcept {
    return static_cast<std::size_t>(paddedRowBytes(static_cast<std::uint64_t>(width), bitCount));
}

namespace {

// The header at `headerStart`, the masks and the extent of the palette that follow it.
std::optional<BmpInfo> readHeaders(const ByteReader& file, std::size_t headerStart, PaletteExtent& palette,
                                   Reason& why) {
    const auto headerSize = file.littleEndian32(headerStart);
    why = "BMP: no valid length of the header";
    if (headerSize && *headerSize != coreHeaderSize && *headerSize < shortestOs2HeaderSize) return {};
    why = "BMP: the data ends within the headers";
    const auto headerBytes = headerSize ? file.slice(headerStart, *headerSize) : std::nullopt;
    if (!headerBytes) return {};
    const ByteReader header(*headerBytes);

    BmpInfo info;
    if (*headerSize == coreHeaderSize) {
        readCoreHeader(header, info);
    } else {
        readInfoHeader(header, info);
    }
    const Reason problem = headerProblem(info, *headerSize);
    if (problem) {
        why = problem;
        return {};
    }
    std::size_t position = headerStart + *headerSize;
    if (info.bitCount >= 16 && !readMasks(file, headerStart, *headerSize, position, info)) return {};
    palette = declaredPalette(file, header, position, info.bitCount);
    return info;
}

} // namespace

std::optional<BmpInfo> readBmpInfo(std::span<const std::uint8_t> file, Reason& why) {
    const ByteReader reader(file);
    why = "BMP: no signature";
    if (reader.byte(0) != 'B' || reader.byte(1) != 'M') return {};
    PaletteExtent palette{};
    auto info = readHeaders(reader, fileHeaderSize, palette, why);
    if (!info) return {};
    info->pixelOffset = findPixels(reader, palette, *info);
    if (info->bitCount <= 8) readPalette(reader, palette, *info);
    return info;
}

bool mayEmbedPicture(std::span<const std::uint8_t> start) noexcept {
    const ByteReader reader(start);
    const BmpCompression compression{reader.littleEndian32(compressionAt).value_or(0)};
    return reader.byte(0) == 'B' && reader.byte(1) == 'M' &&
           (compression == BmpCompression::jpeg || compression == BmpCompression::png);
}

std::span<const std::uint8_t> embeddedPicture(std::span<const std::uint8_t> file) noexcept {
    if (!mayEmbedPicture(file)) return {};
    const ByteReader reader(file);
    const auto field = [&](std::size_t at) { return reader.littleEndian32(at).value_or(0); };
    const bool isJpeg = BmpCompression{field(compressionAt)} == BmpCompression::jpeg;
    const std::uint32_t headerSize = field(fileHeaderSize), start = field(10), stated = field(34);
    const std::uint64_t afterHeaders = std::uint64_t{fileHeaderSize} + headerSize; // which 32 bits do not hold
    if (isOs2(headerSize) || start < afterHeaders || start >= file.size()) return {};
    const auto rest = file.subspan(start);
    const auto data = rest.first(stated == 0 ? rest.size() : std::min<std::size_t>(stated, rest.size()));
    constexpr std::array<std::uint8_t, 3> startOfJpeg = {0xFF, 0xD8, 0xFF};
    constexpr std::array<std::uint8_t, 3> startOfPng = {0x89, 'P', 'N'};
    const bool isOne = data.size() >= 20 && std::ranges::equal(data.first(3), isJpeg ? startOfJpeg : startOfPng);
    return isOne ? data : std::span<const std::uint8_t>();
}

std::optional<BmpInfo> readDibInfo(std::span<const std::uint8_t> dib, Reason& why) {
    const ByteReader reader(dib);
    PaletteExtent palette{};
    auto info = readHeaders(reader, 0, palette, why);
    if (!info) return {};
    info->pixelOffset = static_cast<std::size_t>(std::min<std::uint64_t>(palette.end(), dib.size()));
    if (info->bitCount <= 8) readPalette(reader, palette, *info);
    return info;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
