#include "shared/modParsers.h"
#include "support/Pictures.h"
#include "surface/HostAccess.h"
#include <gtest/gtest.h>
#include <limits>

namespace pixkit {
namespace {

using test::fill;
using test::Pixel;
using test::pixelsOf;

TEST(Effects, DoNothingOnAnEmptyInstance) {
    cPixSheet sheet;
    EXPECT_FALSE(sheet.MakeGrayScale(gsclNTSCPAL));
    EXPECT_FALSE(sheet.MakeImageInverse());
    EXPECT_FALSE(sheet.MakeLighterDarker(50));
    EXPECT_FALSE(sheet.MakeTransparent(0));
    EXPECT_FALSE(sheet.MakeTransparent(0, true));
    EXPECT_FALSE(sheet.BlendToColor(0));
    EXPECT_FALSE(sheet.MirrorImage(true, true));
}

TEST(MakeGrayScale, WeighsTheRightChannelsByEveryFormula) {
    // (B, G, R) = (200, 100, 50): every formula gives another grey, so exchanged weights show.
    const Pixel source = {200, 100, 50, 255};
    const std::pair<std::int32_t, int> rows[] = {
        {gsclNTSCPAL, 96},    // 14.95 + 58.7 + 22.8 = 96.45
        {gsclCCIR709, 97},    // 10.65 + 71.5 + 14.4 = 96.55
        {gsclSimpleAvg, 117}, // 16.65 + 33.4 + 66.6 = 116.65
        {gsclRedMask, 70},
        {gsclGreenMask, 105},
        {gsclBlueMask, 175},
        {gsclRedGreenMask, 87}, // 22.5 + 45 + 20 = 87.5, but 0.45 in single precision lies a little below
        {gsclBlueGreenMask, 140},
        {99, 96},
        {-2, 96},
    };
    for (const auto& [formula, grey] : rows) {
        cPixSheet sheet;
        fill(sheet, 3, 1, {source, {1, 2, 3, 0}, {30, 20, 10, 40}});
        ASSERT_TRUE(sheet.MakeGrayScale(formula));
        const auto pixels = pixelsOf(sheet);
        const auto level = static_cast<std::uint8_t>(grey);
        EXPECT_EQ(pixels[0], (Pixel{level, level, level, 255})) << formula;
        EXPECT_EQ(pixels[1], (Pixel{1, 2, 3, 0}));
        EXPECT_EQ(pixels[2][3], 40);
    }
    cPixSheet sheet;
    fill(sheet, 1, 1, {source});
    EXPECT_FALSE(sheet.MakeGrayScale(gsclNone));
    EXPECT_EQ(pixelsOf(sheet)[0], source);
}

TEST(MakeImageInverse, StaysWithinEachPixelsOwnAlpha) {
    cPixSheet sheet;
    fill(sheet, 3, 1, {{10, 20, 30, 128}, {1, 2, 3, 0}, {0, 128, 255, 255}});
    ASSERT_TRUE(sheet.MakeImageInverse());
    EXPECT_EQ(pixelsOf(sheet), (std::vector<Pixel>{{118, 108, 98, 128}, {1, 2, 3, 0}, {255, 127, 0, 255}}));
}

TEST(MakeLighterDarker, MovesByAShareOfAlphaAndIgnoresWhatIsOutOfRange) {
    struct Row {
        float percent;
        Pixel before, after;
        bool result;
    };
    const Row rows[] = {
        {50, {100, 100, 100, 200}, {200, 200, 200, 200}, true},
        {60, {100, 99, 0, 200}, {200, 200, 120, 200}, true},
        {-25, {100, 50, 10, 255}, {37, 0, 0, 255}, true},   // 255 * -63.75 / 255 = -63 truncated
        {1.0F, {10, 10, 10, 100}, {11, 11, 11, 100}, true}, // 254.99999 is nearest 255, so one whole level
        {100, {0, 1, 2, 7}, {7, 7, 7, 7}, true},
        {-100, {7, 6, 5, 7}, {0, 0, 0, 7}, true},
        {0.1F, {3, 3, 3, 255}, {3, 3, 3, 255}, true}, // an adjustment below one level truncates to none
        {0, {1, 2, 3, 255}, {1, 2, 3, 255}, false},
        {150, {1, 2, 3, 255}, {1, 2, 3, 255}, false},
        {-100.5F, {1, 2, 3, 255}, {1, 2, 3, 255}, false},
        {std::numeric_limits<float>::quiet_NaN(), {1, 2, 3, 255}, {1, 2, 3, 255}, false},
        {50, {9, 9, 9, 0}, {9, 9, 9, 0}, true},
    };
    for (const auto& row : rows) {
        cPixSheet sheet;
        fill(sheet, 1, 1, {row.before});
        EXPECT_EQ(sheet.MakeLighterDarker(row.percent), row.result) << row.percent;
        EXPECT_EQ(pixelsOf(sheet)[0], row.after) << row.percent;
    }
}

TEST(MakeTransparent, MatchesExactOpaquePixelsOnly) {
    cPixSheet sheet;
    const std::vector<Pixel> pixels = {{1, 2, 3, 255}, {1, 2, 4, 255}, {1, 2, 3, 254}, {0, 0, 0, 0}};
    fill(sheet, 4, 1, pixels);
    HostAccess::ImageType(sheet, imgBitmap);
    sheet.Alpha(AlphaNone);
    EXPECT_TRUE(sheet.MakeTransparent(0x040201));
    EXPECT_EQ(pixelsOf(sheet), pixels) << "no pixel has that colour";
    EXPECT_EQ(sheet.ImageType(), imgBitmap);
    EXPECT_EQ(sheet.Alpha(), AlphaNone) << "nothing changed, so neither does the class";

    EXPECT_TRUE(sheet.MakeTransparent(0x010203)); // blue 1, green 2, red 3
    EXPECT_EQ(pixelsOf(sheet)[0], (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(pixelsOf(sheet)[2], pixels[2]);
    EXPECT_EQ(sheet.ImageType(), imgBmpPARGB);
    EXPECT_EQ(sheet.Alpha(), AlphaSimple);

    fill(sheet, 3, 1, {{0, 0, 0, 0}, {0, 0, 0, 255}, {4, 5, 6, 255}});
    EXPECT_TRUE(sheet.MakeTransparent(-1, true));
    EXPECT_EQ(pixelsOf(sheet), (std::vector<Pixel>{{255, 255, 255, 255}, {0, 0, 0, 255}, {4, 5, 6, 255}}));
    EXPECT_EQ(sheet.Alpha(), AlphaNone) << "the reverse classifies anew";
    fill(sheet, 2, 1, {{0, 0, 0, 0}, {4, 5, 6, 100}});
    HostAccess::ImageType(sheet, imgTGA);
    EXPECT_TRUE(sheet.MakeTransparent(0, true));
    EXPECT_EQ(sheet.Alpha(), AlphaComplex);
    EXPECT_TRUE(sheet.MakeTransparent(0));
    EXPECT_EQ(sheet.Alpha(), AlphaSimple) << "whatever else the image holds";
    EXPECT_EQ(sheet.ImageType(), imgTGA) << "only imgBitmap changes";
}

TEST(BlendToColor, AppliesAlphaToThePixelsOwnColourTwice) {
    cPixSheet sheet;
    const std::vector<Pixel> pixels = {{10, 20, 30, 255}, {100, 50, 0, 128}, {9, 9, 9, 0}};
    fill(sheet, 3, 1, pixels);
    EXPECT_FALSE(sheet.BlendToColor(0xFF0000, 0));
    EXPECT_FALSE(sheet.BlendToColor(0xFF0000, -5));
    EXPECT_EQ(pixelsOf(sheet), pixels);
    EXPECT_TRUE(sheet.BlendToColor(0xFF0000, 33));
    // (100 * 67 + 255 * 33) * 128 / 25500 = 75, (50 * 67) * 128 / 25500 = 16
    EXPECT_EQ(pixelsOf(sheet), (std::vector<Pixel>{{90, 13, 20, 255}, {75, 16, 0, 128}, {9, 9, 9, 0}}));
    EXPECT_TRUE(sheet.BlendToColor(0xFF0000, 1000)) << "above 100 counts as 100";
    EXPECT_EQ(pixelsOf(sheet)[0], (Pixel{255, 0, 0, 255}));
}

TEST(MirrorImage, TurnsTheAxisAskedFor) {
    const std::vector<Pixel> pixels = {{1, 0, 0, 9}, {2, 0, 0, 9}, {3, 0, 0, 9},
                                       {4, 0, 0, 9}, {5, 0, 0, 9}, {6, 0, 0, 9}};
    const auto order = [](const cPixSheet& sheet) {
        std::vector<int> first;
        for (const auto& pixel : pixelsOf(sheet))
            first.push_back(pixel[0]);
        return first;
    };
    cPixSheet sheet;
    fill(sheet, 3, 2, pixels);
    EXPECT_FALSE(sheet.MirrorImage(false, false));
    EXPECT_TRUE(sheet.MirrorImage(true, false));
    EXPECT_EQ(order(sheet), (std::vector<int>{3, 2, 1, 6, 5, 4}));
    EXPECT_TRUE(sheet.MirrorImage(false, true));
    EXPECT_EQ(order(sheet), (std::vector<int>{6, 5, 4, 3, 2, 1}));
    EXPECT_TRUE(sheet.MirrorImage(true, true));
    EXPECT_EQ(order(sheet), (std::vector<int>{1, 2, 3, 4, 5, 6}));
}

} // namespace
} // namespace pixkit
