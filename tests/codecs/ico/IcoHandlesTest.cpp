// Icons by handle: what pixels become of their bitmaps. What is no icon, and failures, are tests/loading's question.
#include "codecs/ico/cICOparser.h"
#include "platform/gdi.h"
#include "platform/icons.h"
#include "support/QuietLoads.h"
#include "surface/HostAccess.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

using platform::UniqueBitmap;
using platform::UniqueIcon;

class IcoHandles : public QuietLoads {};

// 2 x 2 pixels, top row first.
UniqueBitmap colorBitmap(const std::vector<Pixel>& pixels, std::uint16_t bitCount) {
    platform::BitmapInfoHeader header{.biWidth = 2, .biHeight = -2, .biBitCount = bitCount};
    void* bits = nullptr;
    UniqueBitmap bitmap(platform::CreateDIBSection(0, header, &bits));
    const std::size_t step = bitCount / 8U;
    for (std::size_t i = 0; i < 4 && bits != nullptr; ++i)
        std::copy_n(pixels[i].begin(), step, static_cast<std::uint8_t*>(bits) + i / 2 * 8 + i % 2 * step);
    return bitmap;
}

UniqueIcon icon(const std::vector<Pixel>& colors, std::uint16_t bitCount, const Bytes& mask, bool isIcon = true) {
    const UniqueBitmap color = colors.empty() ? UniqueBitmap() : colorBitmap(colors, bitCount);
    const auto height = static_cast<std::int32_t>(mask.size() / 2);
    const UniqueBitmap maskBitmap(platform::CreateMonochromeBitmap(2, height, mask.data()));
    return UniqueIcon(platform::CreateIconIndirect({isIcon, 1, 7, maskBitmap.get(), color.get()}));
}

const Pixel clear{0, 0, 0, 0}, black{0, 0, 0, 255}, white{255, 255, 255, 255};
const std::vector<Pixel> straight = {{200, 100, 50, 128}, {1, 2, 3, 255}, {9, 9, 9, 0}, {4, 5, 6, 255}};
// The mask of each row is the upper two bits of two bytes: here the top left pixel.
const Bytes topLeft = {0x80, 0, 0, 0};

} // namespace

TEST_F(IcoHandles, PixelsAreWrong) {
    const std::vector<Pixel> noAlpha = {{200, 100, 50, 0}, {1, 2, 3, 0}, {9, 9, 9, 0}, {4, 5, 6, 0}};
    struct Row {
        const char* fault;
        UniqueIcon icon;
        std::vector<Pixel> pixels;
        AlphaTypeEnum alpha;
        eImageFormat type;
    };
    const Pixel one{1, 2, 3, 255}, two{9, 9, 9, 255}, three{4, 5, 6, 255};
    const Row rows[] = {
        {"alpha", icon(straight, 32, topLeft), {{100, 50, 25, 128}, one, clear, three}, AlphaComplex, imgIconARGB},
        {"alpha, cursor",
         icon(straight, 32, topLeft, false),
         {{100, 50, 25, 128}, one, clear, three},
         AlphaComplex,
         imgCursorARGB},
        {"32 bits without alpha", icon(noAlpha, 32, topLeft), {clear, one, two, three}, AlphaSimple, imgIcon},
        {"24 bits", icon(straight, 24, topLeft), {clear, one, two, three}, AlphaSimple, imgIcon},
        {"24 bits, opaque", icon(straight, 24, Bytes(4)), {{200, 100, 50, 255}, one, two, three}, AlphaNone, imgIcon},
        // AND rows, then XOR rows: transparent, white / black, inverting.
        {"monochrome",
         icon({}, 1, {0x80, 0, 0x40, 0, 0x40, 0, 0x40, 0}),
         {clear, white, black, clear},
         AlphaSimple,
         imgIcon},
        {"text cursor",
         icon({}, 1, {0xC0, 0, 0xC0, 0, 0x40, 0, 0x40, 0}, false),
         {clear, black, clear, black},
         AlphaSimple,
         imgCursor},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fault);
        ASSERT_TRUE(row.icon);
        cPixSheet sheet;
        EXPECT_TRUE(cICOparser::ConvertstdPicTo32bpp(row.icon.get(), sheet));
        EXPECT_EQ(pixelsOf(sheet), row.pixels);
        EXPECT_EQ(sheet.Alpha(), row.alpha);
        EXPECT_EQ(sheet.ImageType(), row.type);
        const bool isCursor = row.type == imgCursor || row.type == imgCursorARGB;
        EXPECT_EQ(HostAccess::hotspot(sheet), isCursor ? (CursorHotspot{1, 7}) : CursorHotspot{});
    }
}
// SPDX-License-Identifier: MIT
