// Rows of bytes from top to bottom, out of an image and into one.
#include "support/Pictures.h"
#include <span>

namespace pixkit::test {
namespace {

constexpr RowFormat formats[] = {RowFormat::straightRGBA, RowFormat::straightBGRA, RowFormat::premultipliedRGBA,
                                 RowFormat::premultipliedBGRA};

TEST(Rows, HaveAnotherOrderOrOtherColours) {
    const std::vector<Pixel> stored = {{1, 2, 3, 255}, {0, 0, 0, 0}, {1, 64, 100, 128}, {9, 9, 9, 255}};
    const Bytes expected[] = {
        {3, 2, 1, 255, 0, 0, 0, 0, 200, 128, 2, 128, 9, 9, 9, 255}, // 100 * 255 / 128 is 199.2
        {1, 2, 3, 255, 0, 0, 0, 0, 2, 128, 200, 128, 9, 9, 9, 255},
        {3, 2, 1, 255, 0, 0, 0, 0, 100, 64, 1, 128, 9, 9, 9, 255},
        {1, 2, 3, 255, 0, 0, 0, 0, 1, 64, 100, 128, 9, 9, 9, 255},
    };
    cPixSheet sheet;
    fill(sheet, 2, 2, stored);
    sheet.Alpha(AlphaComplex);
    for (const RowFormat format : formats)
        EXPECT_EQ(sheet.GetRows(format), expected[static_cast<int>(format)]) << static_cast<int>(format);
    sheet.Alpha(AlphaNone); // then alpha bytes mean nothing
    EXPECT_EQ(sheet.GetRows(), (Bytes{3, 2, 1, 255, 0, 0, 0, 255, 100, 64, 1, 255, 9, 9, 9, 255}));
}

// Every colour with every alpha.
TEST(Rows, LoseColoursThereAndBack) {
    cPixSheet sheet, back;
    draw(sheet, 256, 256, AlphaComplex, [](unsigned colour, unsigned alpha) {
        const auto held = static_cast<std::uint8_t>(std::min(colour, alpha));
        return Pixel{held, static_cast<std::uint8_t>(alpha - held), 0, static_cast<std::uint8_t>(alpha)};
    });
    for (const RowFormat format : formats) {
        const Bytes rows = sheet.GetRows(format);
        ASSERT_TRUE(back.SetRows(rows, 256, 256, format));
        EXPECT_EQ(pixelsOf(back), pixelsOf(sheet)) << static_cast<int>(format);
        EXPECT_EQ(back.Alpha(), AlphaComplex);
        EXPECT_EQ(back.ImageType(), imgNone);
    }
}

TEST(Rows, BecomeImagesThatAreNotInTheStoresForm) {
    struct Row {
        RowFormat format;
        Bytes pixel;
        Pixel stored;
        AlphaTypeEnum alpha;
    };
    const Row rows[] = {
        {RowFormat::straightRGBA, {255, 1, 2, 128}, {1, 0, 128, 128}, AlphaComplex},
        {RowFormat::premultipliedRGBA, {255, 1, 2, 128}, {2, 1, 128, 128}, AlphaComplex},
        {RowFormat::straightBGRA, {255, 1, 2, 0}, {0, 0, 0, 0}, AlphaSimple},
        {RowFormat::premultipliedBGRA, {255, 1, 2, 0}, {0, 0, 0, 0}, AlphaSimple},
        {RowFormat::premultipliedBGRA, {255, 1, 2, 255}, {255, 1, 2, 255}, AlphaNone},
    };
    for (const Row& row : rows) {
        cPixSheet sheet;
        ASSERT_TRUE(sheet.SetRows(row.pixel, 1, 1, row.format));
        EXPECT_EQ(pixelsOf(sheet), std::vector<Pixel>{row.stored}) << &row - rows;
        EXPECT_EQ(sheet.Alpha(), row.alpha) << &row - rows;
    }
}

TEST(Rows, ReachBeyondTheBytesOrIntoTheGaps) {
    cPixSheet sheet;
    fill(sheet, 1, 2, {{1, 1, 1, 255}, {2, 2, 2, 255}});
    Bytes bytes(10, 7);
    ASSERT_TRUE(sheet.GetRows(bytes, RowFormat::premultipliedBGRA, 6));
    EXPECT_EQ(bytes, (Bytes{1, 1, 1, 255, 7, 7, 2, 2, 2, 255}));
    struct Row {
        std::size_t bytes, stride;
        std::int32_t width, height;
    };
    const Row refusedRows[] = {{9, 6, 1, 2},
                               {10, 3, 1, 2},
                               {7, 0, 1, 2},
                               {3, 0, 1, 1},
                               {10, SIZE_MAX, 1, 2},
                               {10, SIZE_MAX / 2 + 1, 1, 3},
                               {10, 0, 0, 1},
                               {10, 0, 1, -1},
                               {10, 0, INT32_MAX, INT32_MAX},
                               {0, 0, 1, 1},
                               {10, SIZE_MAX, 1, INT32_MAX}};
    const Bytes before = bytes;
    for (const Row& row : refusedRows) {
        SCOPED_TRACE(&row - refusedRows);
        if (row.width == 1 && row.height == 2) {
            EXPECT_FALSE(sheet.GetRows(std::span(bytes).first(row.bytes), RowFormat::straightRGBA, row.stride));
            EXPECT_FALSE(sheet.LastErrorText().empty());
        }
        cPixSheet target;
        target.InitializeDIB(1, 1);
        EXPECT_FALSE(target.SetRows(std::span(bytes).first(row.bytes), row.width, row.height, RowFormat::straightRGBA,
                                    row.stride));
        EXPECT_FALSE(target.LastErrorText().empty());
        EXPECT_EQ(target.Handle(), 0) << "as after a load that was refused";
    }
    EXPECT_EQ(bytes, before);
    ASSERT_TRUE(sheet.SetRows(bytes, 1, 2, RowFormat::premultipliedBGRA, 6));
    EXPECT_EQ(pixelsOf(sheet), (std::vector<Pixel>{{1, 1, 1, 255}, {2, 2, 2, 255}}));
    ASSERT_TRUE(sheet.SetRows({sheet.BitsPointer(), 8}, 2, 1)) << "rows in the image's own pixels";
    EXPECT_EQ(pixelsOf(sheet), (std::vector<Pixel>{{2, 2, 2, 255}, {1, 1, 1, 255}}));
    sheet.MaxPixels(1);
    EXPECT_FALSE(sheet.SetRows(bytes, 2, 1));
    EXPECT_EQ(sheet.GetRows(), Bytes());
    EXPECT_EQ(sheet.LastErrorText(), "there is no image");
}

} // namespace
} // namespace pixkit::test
// SPDX-License-Identifier: MIT
