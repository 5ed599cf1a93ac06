// From the picture that the loader made of the frame to the store.
#include "codecs/FileNotes.h"
#include "codecs/gif/cGIFparser.h"
#include "coding/ByteReader.h"
#include "coding/RowBytes.h"
#include "kernels/kernels.h"
#include "platform/gdi.h"
#include "platform/pictures.h"
#include "shared/AlphaChannel.h"
#include "shared/StdPictures.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <array>
#include <bitset>
#include <cstring>
#include <stdexcept>

namespace pixkit {

namespace {

using platform::BitmapInfoHeader;
using platform::ColorTable;

// What each number of 8 bits becomes in the store, and for which numbers there is nothing.
struct ReadyPixels {
    void set(std::size_t number, std::uint8_t b, std::uint8_t g, std::uint8_t r, std::uint8_t a) noexcept {
        const std::uint8_t pixel[4] = {b, g, r, a};
        std::memcpy(&pixels[number * 4], pixel, 4);
    }
    // Throws when one of the numbers has no pixel.
    void check(std::span<const std::uint8_t> numbers) const {
        if (missing.none()) return;
        if (std::ranges::any_of(numbers, [this](std::uint8_t number) { return missing[number]; })) {
            throw std::out_of_range("subscript out of range");
        }
    }

    alignas(4) std::array<std::uint8_t, 1024> pixels{};
    std::bitset<256> missing;
};

// The index of a pixel whose frame has the grays (i, i, i), and this colour at entry 0.
std::uint8_t indexOf(std::uint32_t color, std::uint32_t entry0) noexcept {
    constexpr std::uint32_t withoutAlpha = 0xFFFFFF;
    return (color & withoutAlpha) == entry0 ? std::uint8_t{0} : static_cast<std::uint8_t>(color);
}

void readLines(const platform::StdPicture& picture, PixelView host, std::size_t y, std::size_t count, void* lines,
               std::uint16_t bitCount, ColorTable* colors) {
    BitmapInfoHeader header{.biWidth = static_cast<std::int32_t>(host.width),
                            .biHeight = static_cast<std::int32_t>(host.height)};
    header.biBitCount = bitCount;
    const int done = platform::GetDIBits(platform::ScreenDC().get(), picture.handle(), static_cast<std::uint32_t>(y),
                                         static_cast<std::uint32_t>(count), lines, header, colors);
    if (done != static_cast<int>(count)) throw std::runtime_error("GIF: the pixels cannot be read");
}

// The picture has 8 bits: its numbers are looked up in what `pixelsOf` makes of its colours.
template <class PixelsOf>
void convertNumbers(const platform::StdPicture& picture, PixelView host, PixelsOf&& pixelsOf) {
    constexpr std::size_t bytesAtOnce = 16 * 1024;                               // stay in the cache
    const auto stride = static_cast<std::size_t>(paddedRowBytes(host.width, 8)); // never 0, which analyzers do not see
    const std::size_t linesAtOnce =
        std::clamp<std::size_t>(bytesAtOnce / std::max<std::size_t>(stride, 1), 1, host.height);
    std::vector<std::uint8_t> lines(stride * linesAtOnce);
    ReadyPixels ofNumber;
    for (std::size_t y = 0; y < host.height; y += linesAtOnce) {
        const std::size_t count = std::min(linesAtOnce, host.height - y);
        ColorTable colors;
        readLines(picture, host, y, count, lines.data(), 8, &colors);
        if (y == 0) ofNumber = pixelsOf(colors);
        for (std::size_t i = 0; i < count; ++i) {
            const std::uint8_t* const numbers = lines.data() + i * stride;
            ofNumber.check({numbers, host.width});
            kernels::table().fromIndex8(host.row(y + i), numbers, host.width, ofNumber.pixels.data());
        }
    }
}

// The numbers are the indexes, unless the system has put its colours into another order.
ReadyPixels byColors(const ColorTable& colors, const ReadyPixels& ofIndex, std::uint32_t entry0) {
    ReadyPixels ofNumber;
    for (std::size_t number = 0; number < colors.size(); ++number) {
        const std::size_t index = indexOf(colors[number], entry0);
        std::memcpy(&ofNumber.pixels[number * 4], &ofIndex.pixels[index * 4], 4);
        ofNumber.missing[number] = ofIndex.missing[index];
    }
    return ofNumber;
}

ReadyPixels opaque(const ColorTable& colors) {
    ReadyPixels ofNumber;
    std::memcpy(ofNumber.pixels.data(), colors.data(), ofNumber.pixels.size());
    for (std::size_t number = 0; number < colors.size(); ++number)
        ofNumber.pixels[number * 4 + 3] = 255;
    return ofNumber;
}

// Any other picture is read as colours, which tell the indexes.
void convertColors(const platform::StdPicture& picture, PixelView host, const ReadyPixels& ofIndex,
                   std::uint32_t entry0) {
    readLines(picture, host, 0, host.height, host.bits, 32, nullptr);
    std::vector<std::uint8_t> indexes(host.width);
    for (std::size_t y = 0; y < host.height; ++y) {
        std::uint8_t* const row = host.row(y);
        for (std::size_t x = 0; x < host.width; ++x) {
            std::uint32_t color;
            std::memcpy(&color, row + x * 4, 4);
            indexes[x] = indexOf(color, entry0);
        }
        ofIndex.check(indexes);
        kernels::table().fromIndex8(row, indexes.data(), host.width, ofIndex.pixels.data());
    }
}

// A picture without transparency that has not 8 bits draws itself.
void drawOpaque(const platform::StdPicture& picture, cPixSheet& host) {
    const auto dc = host.LoadDIBinDC(true);
    const bool drawn = dc != 0 && picture.Render(dc, 0, 0, host.Width(), host.Height());
    platform::GdiFlush();
    host.LoadDIBinDC(false);
    if (!drawn) throw std::runtime_error("GIF: the picture cannot be drawn");
    constexpr std::int32_t alphaUnused = -1; // what drawing leaves there says nothing
    iparseValidateAlphaChannel(HostAccess::pixels(host), true, alphaUnused);
}

} // namespace

ReadResult cGIFparser::ConvertGIFto32bpp(cPixSheet& cHost) const {
    const auto picture = iparseArrayToPicture(c_GIFframe, 0, c_GIFframe.size());
    if (!picture) return ReadResult::damaged("GIF: the system's loader refuses the frame");
    platform::BitmapRecord bitmap;
    if (!platform::GetObjectA(picture->handle(), bitmap))
        return ReadResult::unable("GIF: the picture of the system's loader cannot be taken over");
    if (!cHost.InitializeDIB(bitmap.bmWidth, bitmap.bmHeight)) return ReadResult::unable(noMemoryForPixels);
    const bool hasNumbers = bitmap.bmBitsPixel == 8;
    if (!m_frame.TransIndex) {
        if (hasNumbers) {
            convertNumbers(*picture, HostAccess::pixels(cHost), opaque);
        } else {
            drawOpaque(*picture, cHost);
        }
        cHost.Alpha(AlphaNone);
    } else {
        ReadyPixels ofIndex;
        for (std::size_t index = 0; index < 256; ++index) {
            // An index beyond the table takes what follows in the data for its colour, as far as there is data.
            const auto color = ByteReader(c_GIFdata).slice(m_frame.tblOffset + 3 * index, 3);
            ofIndex.missing[index] = !color;
            if (color) ofIndex.set(index, (*color)[2], (*color)[1], (*color)[0], 255);
        }
        ofIndex.set(*m_frame.TransIndex, 0, 0, 0, 0);
        ofIndex.missing.reset(*m_frame.TransIndex);

        const std::uint8_t* const zero = &c_GIFframe[m_frameTable];
        const auto entry0 = std::uint32_t{zero[0]} << 16 | std::uint32_t{zero[1]} << 8 | zero[2];
        if (hasNumbers) {
            convertNumbers(*picture, HostAccess::pixels(cHost),
                           [&](const ColorTable& colors) { return byColors(colors, ofIndex, entry0); });
        } else {
            convertColors(*picture, HostAccess::pixels(cHost), ofIndex, entry0);
        }
        cHost.Alpha(AlphaSimple);
    }
    HostAccess::notes(cHost) = notesOf(c_GIFdata);
    HostAccess::ImageType(cHost, imgGIF);
    return ReadResult::loaded();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
