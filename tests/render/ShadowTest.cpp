#include "platform/faults.h"
#include "support/AllocationFault.h"
#include "support/Pictures.h"
#include "support/SourceFolder.h"
#include "surface/HostAccess.h"
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace pixkit {
namespace {

using test::fill;
using test::Pixel;
using test::pixelsOf;

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

void fillRandomly(cPixSheet& sheet, std::int32_t width, std::int32_t height) {
    std::mt19937 random(static_cast<unsigned>(width * 1000 + height));
    std::vector<Pixel> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (Pixel& pixel : pixels)
        for (std::uint8_t& byte : pixel)
            byte = static_cast<std::uint8_t>(random() >> 24);
    fill(sheet, width, height, pixels);
}

// The average over the box as one would write it down, pixel by pixel.
std::vector<Pixel> shadowByTheBook(const cPixSheet& sheet, int depth, Pixel colour) {
    const auto source = pixelsOf(sheet);
    const auto alphaAt = [&](int x, int y) {
        const bool inside = x >= 0 && y >= 0 && x < sheet.Width() && y < sheet.Height();
        return inside ? int{source[static_cast<std::size_t>(y * sheet.Width() + x)][3]} : 0;
    };
    std::vector<Pixel> shadow;
    for (int y = 0; y < sheet.Height() + 2 * depth; ++y) {
        for (int x = 0; x < sheet.Width() + 2 * depth; ++x) {
            int tally = 0;
            for (int v = y - 2 * depth; v <= y; ++v)
                for (int u = x - 2 * depth; u <= x; ++u)
                    tally += alphaAt(u, v);
            const int alpha = tally / ((2 * depth + 1) * (2 * depth + 1));
            Pixel pixel;
            for (std::size_t channel = 0; channel < 4; ++channel)
                pixel[channel] = static_cast<std::uint8_t>(colour[channel] * alpha / 255);
            shadow.push_back(pixel);
        }
    }
    return shadow;
}

TEST(CreateDropShadow, AveragesAnotherBoxAtSomeDepthOrSize) {
    constexpr std::pair<std::int32_t, std::int32_t> sizes[] = {{1, 1}, {1, 37}, {40, 1}, {5, 4}, {33, 29}, {131, 9}};
    for (const auto& [width, height] : sizes) {
        cPixSheet sheet;
        fillRandomly(sheet, width, height);
        const auto before = pixelsOf(sheet);
        for (int depth = 0; depth <= 10; ++depth) {
            const auto shadow = sheet.CreateDropShadow(depth, 0x7F30C8FF); // the highest byte means nothing
            ASSERT_TRUE(shadow);
            ASSERT_EQ(shadow->Width(), width + 2 * depth);
            ASSERT_EQ(shadow->Height(), height + 2 * depth);
            EXPECT_EQ(pixelsOf(*shadow), shadowByTheBook(sheet, depth, {0x30, 0xC8, 0xFF, 255}))
                << width << " x " << height << " at depth " << depth;
        }
        EXPECT_EQ(pixelsOf(sheet), before);
    }
}

TEST(CreateDropShadow, KeepsItsDefaultsAndLimits) {
    cPixSheet sheet;
    EXPECT_FALSE(sheet.CreateDropShadow());
    fill(sheet, 10, 10, std::vector<Pixel>(100, {9, 8, 7, 255}));
    sheet.Alpha(AlphaNone);
    sheet.HighQualityInterpolation(true);
    sheet.isAlphaBlendFriendly(false);
    sheet.gdiToken(77);
    const auto shadow = sheet.CreateDropShadow();
    const auto pixels = pixelsOf(*shadow);
    ASSERT_EQ(pixels.size(), 18U * 18U);
    EXPECT_EQ(pixels[9 * 18 + 9], (Pixel{0xC0, 0xC0, 0xC0, 255}));
    EXPECT_EQ(pixels[0], (Pixel{2, 2, 2, 3})); // 255 / 81, 192 * 3 / 255
    EXPECT_EQ(shadow->Alpha(), AlphaComplex);
    EXPECT_EQ(shadow->ImageType(), imgNone);
    EXPECT_TRUE(shadow->HighQualityInterpolation());
    EXPECT_FALSE(shadow->isAlphaBlendFriendly());
    EXPECT_EQ(shadow->gdiToken(), 77);

    EXPECT_EQ(sheet.CreateDropShadow(0)->Alpha(), AlphaNone) << "the silhouette is as opaque as the picture";
    for (const auto& [given, meant] : {std::pair{-3, 0}, {lowest, 0}, {25, 10}, {highest, 10}})
        EXPECT_EQ(pixelsOf(*sheet.CreateDropShadow(given)), pixelsOf(*sheet.CreateDropShadow(meant))) << given;

    sheet.EraseDIB();
    for (const int depth : {0, 4})
        for (const Pixel& pixel : pixelsOf(*sheet.CreateDropShadow(depth)))
            EXPECT_EQ(pixel, (Pixel{0, 0, 0, 0}));
}

TEST(CreateDropShadow, GivesNothingWhenMemoryRunsOut) {
    cPixSheet sheet;
    fillRandomly(sheet, 20, 20);
    bool happened = true;
    for (long after = 0; happened; ++after) {
        std::unique_ptr<cPixSheet> shadow;
        {
            const test::AllocationFault fault(after);
            shadow = sheet.CreateDropShadow(3);
            happened = fault.hasHappened();
        }
        EXPECT_TRUE(shadow || happened);
        EXPECT_TRUE(!shadow || pixelsOf(*shadow) == shadowByTheBook(sheet, 3, {0xC0, 0xC0, 0xC0, 255}));
    }
    const platform::ScopedFault fault(platform::SeamCall::createDIBSection);
    EXPECT_FALSE(sheet.CreateDropShadow(3));
}

TEST(CreateCheckerBoard, PaintsSquaresFromTheTopLeftAndClipsThem) {
    constexpr std::int32_t sizes[] = {1, 2, 3, 6, 7, 12, highest};
    for (const std::int32_t size : sizes) {
        for (const bool selected : {false, true}) {
            cPixSheet sheet;
            fillRandomly(sheet, 7, 8);
            if (selected) sheet.LoadDIBinDC(true);
            sheet.Alpha(AlphaComplex);
            ASSERT_TRUE(sheet.CreateCheckerBoard(size, 0x010203, -1));
            const auto pixels = pixelsOf(sheet);
            for (std::int32_t y = 0; y < 8; ++y)
                for (std::int32_t x = 0; x < 7; ++x)
                    EXPECT_EQ(pixels[static_cast<std::size_t>(y * 7 + x)],
                              (x / size + y / size) % 2 == 0 ? (Pixel{1, 2, 3, 255}) : (Pixel{255, 255, 255, 255}))
                        << size << ": " << x << ", " << y;
            EXPECT_EQ(sheet.Alpha(), AlphaNone);
            EXPECT_EQ(sheet.ImageType(), imgCheckerBoard);
        }
    }
    cPixSheet sheet;
    fill(sheet, 13, 1, std::vector<Pixel>(13));
    ASSERT_TRUE(sheet.CreateCheckerBoard());
    EXPECT_EQ(pixelsOf(sheet)[11], (Pixel{255, 255, 255, 255}));
    EXPECT_EQ(pixelsOf(sheet)[12], (Pixel{0xC0, 0xC0, 0xC0, 255}));
}

TEST(CreateCheckerBoard, RefusesSizesBelowOneWithoutAChange) {
    cPixSheet sheet;
    EXPECT_FALSE(sheet.CreateCheckerBoard());
    fillRandomly(sheet, 4, 4);
    const auto before = pixelsOf(sheet);
    for (const std::int32_t size : {0, -1, lowest})
        EXPECT_FALSE(sheet.CreateCheckerBoard(size)) << size;
    EXPECT_EQ(pixelsOf(sheet), before);
    EXPECT_EQ(sheet.ImageType(), imgNone);
    EXPECT_EQ(sheet.Alpha(), AlphaSimple);
}

// 6 x 5 with visible pixels at (2, 1) and (3, 3), and colour without alpha in a corner, which counts for nothing.
void fillForTrimming(cPixSheet& sheet) {
    std::vector<Pixel> pixels(30);
    pixels[1 * 6 + 2] = {1, 1, 1, 1};
    pixels[3 * 6 + 3] = {3, 3, 3, 255};
    pixels[29] = {9, 9, 9, 0};
    fill(sheet, 6, 5, pixels);
    sheet.Alpha(AlphaComplex);
}

TEST(TrimImage, CutsTheSidesAskedForAndNothingElse) {
    struct Row {
        std::int32_t options;
        TrimRectangle kept;
    };
    const Row rows[] = {
        {trimLeft, {2, 0, 4, 5}},
        {trimTop, {0, 1, 6, 4}},
        {trimRight, {0, 0, 4, 5}},
        {trimBottom, {0, 0, 6, 4}},
        {trimLeft | trimBottom, {2, 0, 4, 4}},
        {trimTop | trimRight, {0, 1, 4, 4}},
        {trimAll, {2, 1, 2, 3}},
        {-1, {2, 1, 2, 3}}, // bits that name no side count for nothing
    };
    for (const Row& row : rows) {
        for (const bool reportOnly : {true, false}) {
            cPixSheet sheet;
            fillForTrimming(sheet);
            const auto before = pixelsOf(sheet);
            TrimRectangle kept;
            ASSERT_TRUE(sheet.TrimImage(row.options, reportOnly, &kept));
            EXPECT_TRUE(kept.x == row.kept.x && kept.y == row.kept.y && kept.Width == row.kept.Width &&
                        kept.Height == row.kept.Height)
                << row.options << ": " << kept.x << ", " << kept.y << ", " << kept.Width << ", " << kept.Height;
            std::vector<Pixel> expected;
            for (std::int32_t y = kept.y; y < kept.y + kept.Height; ++y)
                for (std::int32_t x = kept.x; x < kept.x + kept.Width; ++x)
                    expected.push_back(before[static_cast<std::size_t>(y * 6 + x)]);
            EXPECT_EQ(pixelsOf(sheet), reportOnly ? before : expected);
        }
    }
}

TEST(TrimImage, KeepsWhatBelongsToThePictureAndToTheInstance) {
    cPixSheet sheet;
    fillForTrimming(sheet);
    sheet.Tag(5);
    HostAccess::hotspot(sheet, {3, 0});
    sheet.HighQualityInterpolation(true);
    sheet.ManageOwnDC(true);
    const auto context = sheet.LoadDIBinDC(true);
    ASSERT_NE(context, 0);
    ASSERT_TRUE(sheet.TrimImage());
    EXPECT_EQ(sheet.Alpha(), AlphaComplex);
    EXPECT_EQ(sheet.ImageType(), imgNone);
    EXPECT_EQ(HostAccess::hotspot(sheet), (CursorHotspot{1, -1}));
    EXPECT_EQ(std::any_cast<int>(sheet.Tag()), 5);
    EXPECT_TRUE(sheet.HighQualityInterpolation());
    EXPECT_EQ(sheet.LoadDIBinDC(true), context) << "the image left its device context";
    const auto handle = sheet.Handle();
    TrimRectangle kept;
    EXPECT_TRUE(sheet.TrimImage(trimAll, false, &kept)) << "nothing to cut is no failure";
    EXPECT_EQ(kept.Width, 2);
    EXPECT_EQ(sheet.Handle(), handle);

    cPixSheet loaded;
    loaded.LoadPicture_File((test::sourceFolder() / "samples/pictures/sprite-4-bit.png").string(), 0, 0, true);
    ByteArray file, fileAfter;
    ASSERT_TRUE(loaded.GetOrginalFormat(file));
    ASSERT_TRUE(loaded.TrimImage());
    EXPECT_EQ(loaded.ImageType(), imgPNG);
    ASSERT_TRUE(loaded.GetOrginalFormat(fileAfter));
    EXPECT_EQ(test::bytesOf(fileAfter), test::bytesOf(file));
}

TEST(TrimImage, LeavesThePictureAloneWhenItFails) {
    cPixSheet sheet;
    TrimRectangle kept{7, 7, 7, 7};
    EXPECT_FALSE(sheet.TrimImage(trimAll, false, &kept));
    fillForTrimming(sheet);
    for (const std::int32_t options : {0, 16})
        EXPECT_FALSE(sheet.TrimImage(options, false, &kept)) << "no side";
    {
        const platform::ScopedFault fault(platform::SeamCall::createDIBSection);
        EXPECT_FALSE(sheet.TrimImage(trimAll, false, &kept));
        EXPECT_EQ(sheet.Width(), 6);
        EXPECT_EQ(pixelsOf(sheet)[8], (Pixel{1, 1, 1, 1}));
    }
    sheet.EraseDIB();
    for (const std::int32_t options : {trimLeft, trimTop, trimRight, trimBottom, trimAll})
        EXPECT_FALSE(sheet.TrimImage(options, false, &kept)) << "it would vanish";
    EXPECT_EQ(sheet.Width(), 6);
    EXPECT_EQ(kept.x, 7);
}

} // namespace
} // namespace pixkit
