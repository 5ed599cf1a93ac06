#include "support/Pictures.h"
#include <gtest/gtest.h>
#include <limits>
#include <tuple>

namespace pixkit {
namespace {

using test::bytesOf;
using test::Pixel;
using Bytes = std::vector<std::uint8_t>;

constexpr std::int32_t longMax = std::numeric_limits<std::int32_t>::max();

TEST(GetPixel, UndoesPremultiplicationTruncatingAndCountsFromTheTop) {
    cPixSheet sheet;
    test::fill(sheet, 2, 2, {{64, 32, 16, 128}, {1, 2, 3, 255}, {0, 0, 0, 0}, {5, 5, 5, 1}});
    struct Row {
        std::int32_t x, y;
        bool premultiplied;
        std::int32_t colour, alpha;
    };
    const Row rows[] = {
        {0, 0, false, 31 | 63 << 8 | 127 << 16, 128},
        {0, 0, true, 16 | 32 << 8 | 64 << 16, 128},
        {1, 0, false, 3 | 2 << 8 | 1 << 16, 255},
        {0, 1, false, 0, 0},
        {2, 0, false, -1, 0},
        {0, 2, false, -1, 0},
        {0, -1, false, -1, 0},
        {-1, 0, true, -1, 0},
        {longMax, longMax, false, -1, 0},
    };
    for (const auto& row : rows) {
        std::int32_t alpha = 77;
        EXPECT_EQ(sheet.GetPixel(row.x, row.y, &alpha, row.premultiplied), row.colour) << row.x << ',' << row.y;
        EXPECT_EQ(alpha, row.alpha);
    }
    EXPECT_EQ(cPixSheet().GetPixel(0, 0), -1);
}

TEST(SetPixel, ScalesChannelsAboveAlphaAndMarksTheImageComplex) {
    struct Row {
        std::int32_t colour, alpha;
        bool premultiplied;
        Pixel stored;
        AlphaTypeEnum alphaAfter;
    };
    const Row rows[] = {
        {255, 128, false, {0, 0, 128, 128}, AlphaComplex},
        {255, 128, true, {0, 0, 128, 128}, AlphaComplex},
        {0x102030, 128, true, {0x10, 0x20, 0x30, 128}, AlphaComplex}, // none above alpha: kept
        {0xFF8000, 100, true, {100, 50, 0, 100}, AlphaComplex},       // 255 and 128 scaled, not held at 100
        {0x102030, 255, false, {0x10, 0x20, 0x30, 255}, AlphaNone},
        {-1, 255, true, {255, 255, 255, 255}, AlphaNone}, // negative colours are taken bit by bit
        {0x123456, 0, true, {0, 0, 0, 0}, AlphaComplex},
    };
    for (const auto& row : rows) {
        cPixSheet sheet;
        test::fill(sheet, 2, 2, std::vector<Pixel>(4, Pixel{9, 9, 9, 9}));
        sheet.Alpha(AlphaNone);
        std::uint8_t* const address = sheet.SetPixel(1, 0, row.colour, row.alpha, row.premultiplied);
        EXPECT_EQ(address, sheet.BitsPointer() + 12) << "top right pixel of a bottom-up store";
        EXPECT_EQ(test::pixelsOf(sheet)[1], row.stored) << std::hex << row.colour << " alpha " << row.alpha;
        EXPECT_EQ(sheet.Alpha(), row.alphaAfter);
    }
}

TEST(SetPixel, RefusesWhatIsOutsideWithoutWriting) {
    cPixSheet sheet;
    test::fill(sheet, 2, 1, {{1, 1, 1, 255}, {2, 2, 2, 255}});
    const auto before = test::pixelsOf(sheet);
    for (const auto& [x, y, alpha] :
         {std::tuple{0, 0, 256}, {0, 0, -1}, {2, 0, 255}, {-1, 0, 255}, {0, 1, 0}, {0, -1, 0}}) {
        EXPECT_EQ(sheet.SetPixel(x, y, 255, alpha), nullptr);
    }
    EXPECT_EQ(test::pixelsOf(sheet), before);
    EXPECT_EQ(cPixSheet().SetPixel(0, 0, 0), nullptr);
}

// A 3 x 2 picture whose bytes say where they come from: channel * 16 + pixel number from the top left, alpha 240 and
// up.
void sixPixels(cPixSheet& sheet) {
    std::vector<Pixel> pixels;
    for (std::uint8_t i = 0; i < 6; ++i) {
        pixels.push_back({static_cast<std::uint8_t>(0x10 + i), static_cast<std::uint8_t>(0x20 + i),
                          static_cast<std::uint8_t>(0x30 + i), static_cast<std::uint8_t>(0xF0 + i)});
    }
    test::fill(sheet, 3, 2, pixels);
}

TEST(GetAlphaMask, LaysOutRowsAsAsked) {
    cPixSheet sheet;
    sixPixels(sheet);
    ByteArray out;
    ASSERT_TRUE(sheet.GetAlphaMask(out));
    EXPECT_EQ(bytesOf(out), (Bytes{0xF3, 0xF4, 0xF5, 0, 0xF0, 0xF1, 0xF2, 0}));
    EXPECT_EQ(out.dimensions(), 2);
    EXPECT_EQ(out.bound(1), (ByteArray::Bound{0, 4}));
    EXPECT_EQ(out.bound(2), (ByteArray::Bound{0, 2}));
    ASSERT_TRUE(sheet.GetAlphaMask(out, false, false, false));
    EXPECT_EQ(bytesOf(out), (Bytes{0xF0, 0xF1, 0xF2, 0xF3, 0xF4, 0xF5}));
    EXPECT_EQ(out.dimensions(), 1);
    ASSERT_TRUE(sheet.GetAlphaMask(out, false, false, false, 1, 1, 99, 99)) << "cut at the right and bottom";
    EXPECT_EQ(bytesOf(out), (Bytes{0xF4, 0xF5}));
    ASSERT_TRUE(sheet.GetAlphaMask(out, false, false, true, 1, 0, 0, 1));
    EXPECT_EQ(bytesOf(out), (Bytes{0xF1, 0xF2})) << "bottom-up counts within the rectangle";
    ASSERT_TRUE(sheet.GetAlphaMask(out, false, false, false, 2, 0));
    EXPECT_EQ(bytesOf(out), (Bytes{0xF2, 0xF5})) << "a width of 0 is the image's, then cut";
}

TEST(PixelBlocks, RefuseRectanglesThatAreNothingAndLeaveTheArrayAlone) {
    cPixSheet sheet;
    sixPixels(sheet);
    const Bytes kept = {1, 2, 3};
    for (const auto& [x, y, width, height] : {std::tuple{-1, 0, 1, 1},
                                              {0, -1, 1, 1},
                                              {3, 0, 0, 0},
                                              {0, 2, 0, 0},
                                              {0, 0, -1, 1},
                                              {0, 0, 1, -1},
                                              {longMax, 0, longMax, 1},
                                              {0, longMax, 1, longMax}}) {
        SCOPED_TRACE(testing::Message() << x << ',' << y << ' ' << width << 'x' << height);
        ByteArray out(kept);
        EXPECT_FALSE(sheet.GetAlphaMask(out, true, true, true, x, y, width, height));
        EXPECT_FALSE(sheet.GetDIBbits(out, true, true, true, true, true, x, y, width, height));
        EXPECT_EQ(bytesOf(out), kept);
        const auto before = test::pixelsOf(sheet);
        EXPECT_FALSE(sheet.SetDIBbits(ByteArray(Bytes(1000, 255)), true, true, true, true, x, y, width, height));
        EXPECT_EQ(test::pixelsOf(sheet), before);
    }
    ByteArray out;
    EXPECT_FALSE(cPixSheet().GetDIBbits(out));
    EXPECT_FALSE(cPixSheet().GetAlphaMask(out));
}

TEST(GetDIBbits, WritesEveryLayout) {
    cPixSheet sheet;
    test::fill(sheet, 1, 2, {{1, 2, 3, 255}, {64, 32, 16, 128}});
    struct Row {
        bool bgr, as32, aligned, bottomUp, premultiplied;
        Bytes expected;
    };
    const Row rows[] = {
        {true, true, true, true, true, {64, 32, 16, 128, 1, 2, 3, 255}},
        {false, true, false, false, true, {3, 2, 1, 255, 16, 32, 64, 128}},
        {true, false, true, true, true, {64, 32, 16, 0, 1, 2, 3, 0}},
        {false, false, false, false, true, {3, 2, 1, 16, 32, 64}},
        {true, true, true, false, false, {1, 2, 3, 255, 127, 63, 31, 128}},
        {false, false, false, true, false, {31, 63, 127, 3, 2, 1}},
    };
    for (const auto& row : rows) {
        for (const bool as2d : {true, false}) {
            ByteArray out;
            ASSERT_TRUE(sheet.GetDIBbits(out, as2d, row.bgr, row.as32, row.aligned, row.bottomUp, 0, 0, 0, 0,
                                         row.premultiplied));
            EXPECT_EQ(bytesOf(out), row.expected);
            EXPECT_EQ(out.dimensions(), as2d ? 2 : 1);
        }
    }
}

TEST(SetDIBbits, IsTheInverseOfGetDIBbitsInEveryLayoutAndRectangle) {
    cPixSheet source;
    sixPixels(source);
    for (int layout = 0; layout < 16; ++layout) {
        const bool bgr = (layout & 1) != 0;
        const bool as32 = (layout & 2) != 0;
        const bool aligned = (layout & 4) != 0;
        const bool bottomUp = (layout & 8) != 0;
        ByteArray block;
        ASSERT_TRUE(source.GetDIBbits(block, layout % 3 == 0, bgr, as32, aligned, bottomUp, 1, 0, 2, 2));
        cPixSheet target;
        test::fill(target, 4, 3, std::vector<Pixel>(12, Pixel{7, 7, 7, 255}));
        ASSERT_TRUE(target.SetDIBbits(block, bgr, as32, aligned, bottomUp, 2, 1, 2, 2)) << layout;
        auto expected = std::vector<Pixel>(12, Pixel{7, 7, 7, 255});
        const auto sourcePixels = test::pixelsOf(source);
        for (std::size_t i = 0; i < 4; ++i) {
            Pixel pixel = sourcePixels[i / 2 * 3 + 1 + i % 2];
            if (!as32) pixel[3] = 255;
            expected[(1 + i / 2) * 4 + 2 + i % 2] = pixel;
        }
        EXPECT_EQ(test::pixelsOf(target), expected) << layout;
        EXPECT_EQ(target.Alpha(), as32 ? AlphaComplex : AlphaNone);
    }
}

TEST(SetDIBbits, BringsTheWholeStoreIntoCanonicalForm) {
    cPixSheet sheet;
    test::fill(sheet, 2, 1, {{0, 0, 0, 255}, {0, 0, 0, 255}});
    ASSERT_TRUE(sheet.SetDIBbits(ByteArray({200, 100, 50, 128, 9, 9, 9, 0})));
    EXPECT_EQ(test::pixelsOf(sheet), (std::vector<Pixel>{{100, 50, 25, 128}, {0, 0, 0, 0}}));
    EXPECT_EQ(sheet.Alpha(), AlphaComplex);
    ASSERT_TRUE(sheet.SetDIBbits(ByteArray({1, 2, 3, 0, 4, 5, 6, 0})));
    EXPECT_EQ(test::pixelsOf(sheet), (std::vector<Pixel>{{1, 2, 3, 255}, {4, 5, 6, 255}})) << "alpha carried nothing";
    EXPECT_EQ(sheet.Alpha(), AlphaNone);
}

TEST(SetDIBbits, TakesTheRowsOfATwoDimensionalArrayAsLongAsTheyAre) {
    Bytes rows = {1, 1, 1, 255, 2, 2, 2, 255, 9, 9, 9, 9, 3, 3, 3, 255, 4, 4, 4, 255, 9, 9, 9, 9};
    cPixSheet sheet;
    sheet.InitializeDIB(2, 2);
    const auto array = [&](std::uint32_t fast, std::uint32_t slow) {
        return ByteArray::borrow(rows.data(), {0, fast}, {1, slow});
    };
    ASSERT_TRUE(sheet.SetDIBbits(array(12, 2), true, true, true, false));
    EXPECT_EQ(test::pixelsOf(sheet),
              (std::vector<Pixel>{{1, 1, 1, 255}, {2, 2, 2, 255}, {3, 3, 3, 255}, {4, 4, 4, 255}}));
    sheet.EraseDIB();
    ASSERT_TRUE(sheet.SetDIBbits(array(12, 2), true, true, true, false, 1, 0, 2, 2)) << "cut at the right edge";
    EXPECT_EQ(test::pixelsOf(sheet), (std::vector<Pixel>{{0, 0, 0, 0}, {1, 1, 1, 255}, {0, 0, 0, 0}, {3, 3, 3, 255}}));
    const auto before = test::pixelsOf(sheet);
    EXPECT_FALSE(sheet.SetDIBbits(array(7, 3))) << "rows too short";
    EXPECT_FALSE(sheet.SetDIBbits(array(24, 1))) << "too few rows";
    EXPECT_EQ(test::pixelsOf(sheet), before);
}

TEST(SetDIBbits, AcceptsAnArrayThatLiesOverTheStoreItself) {
    cPixSheet sheet;
    test::fill(sheet, 1, 3, {{1, 1, 1, 255}, {2, 2, 2, 255}, {3, 3, 3, 255}});
    const auto store = ByteArray::borrow(sheet.BitsPointer(), {0, 12});
    ASSERT_TRUE(sheet.SetDIBbits(store, true, true, true, false)); // turns the picture upside down
    EXPECT_EQ(test::pixelsOf(sheet), (std::vector<Pixel>{{3, 3, 3, 255}, {2, 2, 2, 255}, {1, 1, 1, 255}}));
    sheet.InitializeDIB(10, 10);
    EXPECT_FALSE(sheet.LoadPicture_Stream(ByteArray::borrow(sheet.BitsPointer(), {0, 400})));
}

TEST(SetDIBbits, RefusesTooShortDataWithoutWriting) {
    cPixSheet sheet;
    sixPixels(sheet);
    const auto before = test::pixelsOf(sheet);
    EXPECT_FALSE(sheet.SetDIBbits(ByteArray()));
    EXPECT_FALSE(sheet.SetDIBbits(ByteArray(Bytes(23))));
    EXPECT_FALSE(sheet.SetDIBbits(ByteArray(Bytes(20)), true, false)) << "two rows of 12, the last without padding: 21";
    EXPECT_EQ(test::pixelsOf(sheet), before);
    EXPECT_TRUE(sheet.SetDIBbits(ByteArray(Bytes(21), -5), true, false)) << "any lower bound will do";
    EXPECT_TRUE(sheet.SetDIBbits(ByteArray(Bytes(25)))) << "more than needed will do";
}

} // namespace
} // namespace pixkit
