// Writing: header, palette, pixels raw or run-length coded, extension area, footer.
#include "codecs/tga/cTGAparser.h"
#include "coding/ByteWriter.h"
#include "coding/ColorIndexes.h"
#include "kernels/kernels.h"
#include "platform/system.h"
#include "shared/AlphaChannel.h"
#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

namespace pixkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

// --- palette

// One index a pixel; nothing for an image of more than 256 colours. Alpha is not looked at.
std::optional<Bytes> PalettizeImage(ConstPixelView image, ColorIndexes& palette) {
    Bytes indexes(image.width * image.height);
    std::uint8_t* out = indexes.data();
    for (std::size_t y = 0; y < image.height; ++y) {
        const std::uint8_t* pixel = image.row(y);
        for (std::size_t x = 0; x < image.width; ++x, pixel += 4) {
            const auto index = palette.add(pixel[0] | std::uint32_t{pixel[1]} << 8 | std::uint32_t{pixel[2]} << 16);
            if (!index) return {};
            *out++ = *index;
        }
    }
    return indexes;
}

// B, G, R, or B, G, R, A: straight colours unless asPreMultiplied.
Bytes FormatTrueColor(ConstPixelView image, bool hasAlpha, bool asPreMultiplied) {
    const std::size_t rowBytes = image.width * (hasAlpha ? 4 : 3);
    Bytes rows(rowBytes * image.height);
    const auto& kernel = kernels::table();
    for (std::size_t y = 0; y < image.height; ++y) {
        std::uint8_t* out = rows.data() + y * rowBytes;
        if (!hasAlpha) {
            kernel.pack24(out, image.row(y), image.width, false);
        } else if (asPreMultiplied) {
            std::memcpy(out, image.row(y), rowBytes);
        } else {
            kernel.straighten(out, image.row(y), image.width);
        }
    }
    if (hasAlpha && !asPreMultiplied) proveStraight({rows.data(), image.width, image.height, rowBytes});
    return rows;
}

// --- run-length coding

constexpr std::size_t largestPacket = 128; // pixels

// Codes one row. `write` takes a packet: its first byte and what follows; false ends the row.
template <std::size_t bPP, class Write>
bool compressRow(const std::uint8_t* row, std::size_t imgWidth, Write&& write) {
    const auto isLikePrevious = [&](std::size_t x) {
        return std::memcmp(row + x * bPP, row + (x - 1) * bPP, bPP) == 0;
    };
    for (std::size_t x = 0; x < imgWidth;) {
        const std::size_t end = std::min(imgWidth, x + largestPacket);
        std::size_t next = x + 1;
        while (next < end && isLikePrevious(next))
            ++next;
        const std::uint8_t* source = row + x * bPP;
        std::size_t count = next - x;
        if (count > 1) {
            if (!write((count - 1) | 128, source, bPP)) return false;
        } else { // raw, up to the first of two equal pixels; a pixel alone at the row's end is raw too
            while (next < end && !isLikePrevious(next))
                ++next;
            if (next < end) --next;
            count = next - x;
            if (!write(count - 1, source, count * bPP)) return false;
        }
        x += count;
    }
    return true;
}

// Codes each row by itself. Returns nothing when that would not be shorter than the rows are.
template <std::size_t bPP>
std::optional<Bytes> CompressImage(std::span<const std::uint8_t> rows, std::size_t imgWidth, std::size_t imgHeight) {
    Bytes coded(rows.size() - 1);
    std::size_t used = 0;
    const auto write = [&](std::size_t head, const std::uint8_t* source, std::size_t bytes) {
        if (coded.size() - used < bytes + 1) return false;
        coded[used] = static_cast<std::uint8_t>(head);
        std::memcpy(&coded[used + 1], source, bytes);
        used += bytes + 1;
        return true;
    };
    for (std::size_t y = 0; y < imgHeight; ++y) {
        if (!compressRow<bPP>(rows.data() + y * imgWidth * bPP, imgWidth, write)) return {};
    }
    coded.resize(used);
    return coded;
}

// --- the parts of the file

struct PixelData {
    Bytes bytes;
    bool isColorMapped;
    std::size_t bytesPerPixel;
};

PixelData makePixelData(ConstPixelView image, ColorIndexes& palette, bool hasAlpha, bool asPreMultiplied,
                        bool useBitReduction) {
    if (useBitReduction && !hasAlpha) {
        if (auto indexes = PalettizeImage(image, palette)) return {std::move(*indexes), true, 1};
    }
    return {FormatTrueColor(image, hasAlpha, asPreMultiplied), false, hasAlpha ? std::size_t{4} : 3};
}

bool compress(PixelData& data, ConstPixelView image) {
    const auto codec = data.bytesPerPixel == 1   ? CompressImage<1>
                       : data.bytesPerPixel == 3 ? CompressImage<3>
                                                 : CompressImage<4>;
    auto coded = codec(data.bytes, image.width, image.height);
    if (!coded) return false;
    data.bytes = std::move(*coded);
    return true;
}

// Header and palette.
Bytes makeHeader(ConstPixelView image, const PixelData& data, std::span<const std::uint32_t> palette,
                 bool isRunLength) {
    Bytes header;
    ByteWriter out(header);
    out.byte(0); // no identification
    out.byte(data.isColorMapped ? 1U : 0U);
    out.byte((data.isColorMapped ? 1U : 2U) | (isRunLength ? 8U : 0U));
    out.littleEndian16(0); // the palette begins with entry 0
    out.littleEndian16(palette.size());
    out.byte(data.isColorMapped ? 24U : 0U); // bits of an entry
    out.zeros(4);                            // where the picture stands on the screen
    out.littleEndian16(image.width);
    out.littleEndian16(image.height);
    out.byte(data.bytesPerPixel * 8);
    out.byte(data.bytesPerPixel == 4 ? 8U : 0U); // bits of alpha; bottom row first
    for (const std::uint32_t color : palette) {
        out.littleEndian16(color);
        out.byte(color >> 16);
    }
    return header;
}

// Written for premultiplied pixels only: without it readers take alpha for straight.
Bytes CreateTGAextensionBlock() {
    constexpr std::size_t size = 495;
    Bytes area;
    ByteWriter out(area);
    const auto zerosUpTo = [&](std::size_t place) { out.zeros(place - out.size()); };
    out.littleEndian16(size);
    zerosUpTo(367);
    const platform::LocalTime now = platform::GetLocalTime();
    for (const std::uint16_t part : {now.wMonth, now.wDay, now.wYear, now.wHour, now.wMinute, now.wSecond})
        out.littleEndian16(part);
    zerosUpTo(426);
    out.text("Harwick cPixSheet Suite");
    zerosUpTo(467);
    out.littleEndian16(3); // the version, in hundredths, and its letter: not those of today, but what files always said
    out.byte(1);
    out.bytes({255, 255, 255, 255}); // key colour
    zerosUpTo(size - 1);
    out.byte(4); // attributes type: premultiplied alpha
    return area;
}

Bytes makeFooter(std::size_t extensionOffset) {
    Bytes footer;
    ByteWriter out(footer);
    out.littleEndian32(extensionOffset);
    out.littleEndian32(0); // no developer directory
    out.text("TRUEVISION-XFILE.");
    out.byte(0);
    return footer;
}

} // namespace

WrittenFile cTGAparser::SaveAsTGA(const SourcePicture& Picture, const TgaOptions& Options) {
    const ConstPixelView image = Picture.pixels;
    constexpr std::size_t largestSide = std::numeric_limits<std::uint16_t>::max();
    if (!image) return refused(noImage);
    if (image.width > largestSide || image.height > largestSide) return refused(tooLargeForFormat);
    const bool hasAlpha = Picture.alpha != AlphaNone;
    const bool asPreMultiplied = hasAlpha && Options.allowPreMultipliedAlpha;

    ColorIndexes palette;
    PixelData data = makePixelData(image, palette, hasAlpha, asPreMultiplied, Options.useBitReduction);
    const bool isRunLength = Options.useCompression && compress(data, image);
    // A palette may have been begun although the picture has too many colours for one.
    const auto colors = data.isColorMapped ? palette.colors() : std::span<const std::uint32_t>();
    Bytes header = makeHeader(image, data, colors, isRunLength);
    const std::size_t extensionAt = header.size() + data.bytes.size();

    FileParts file;
    file.add(std::move(header));
    file.add(std::move(data.bytes));
    if (asPreMultiplied) file.add(CreateTGAextensionBlock());
    file.add(makeFooter(asPreMultiplied ? extensionAt : 0));
    return file;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
