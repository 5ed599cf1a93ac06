#include "platform/faults.h"
#include "support/AllocationFault.h"
#include "support/Pictures.h"
#include "surface/HostAccess.h"
#include <limits>

namespace pixkit {
namespace {

using test::fill;
using test::Pixel;
using test::pixelsOf;

constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();

TEST(ScaleImage, GivesASizeThatDoesNotFit) {
    struct Row {
        std::int32_t imageWidth, imageHeight, destWidth, destHeight, mode, width, height;
    };
    const Row rows[] = {
        {50, 40, 100, 100, scaleDownAsNeeded, 50, 40},
        {50, 40, 100, 100, ScaleToSize, 100, 80},
        {200, 100, 100, 100, scaleDownAsNeeded, 100, 50},
        {200, 100, 100, 100, ScaleToSize, 100, 50},
        {200, 100, 7, -9, ScaleStretch, 7, -9},
        {200, 100, 7, 9, 7, 200, 100},
        {200, 100, 7, 9, -1, 200, 100},
        {100, 50, 200, 25, scaleDownAsNeeded, 50, 25}, // one ratio above 1
        {3, 3, 2, 2, ScaleToSize, 2, 2},               // 2/3 in single precision lies above: 2.00000006
        {49, 49, 33, 33, ScaleToSize, 32, 32},         // 33/49 lies below: 32.9999993
        {3, 2, -2, 1, ScaleToSize, -3, -2},            // rounded down, not towards 0
        {3, 2, 0, 5, scaleDownAsNeeded, 0, 0},
        {1, 1, most, most, ScaleToSize, -7, -7}, // single precision makes 2,147,483,648 of it: no result
        {2, 1, most, most, ScaleToSize, -7, -7},
        {1, 1, least, least, ScaleToSize, least, least},
    };
    for (const Row& row : rows) {
        cPixSheet sheet;
        ASSERT_TRUE(sheet.InitializeDIB(row.imageWidth, row.imageHeight));
        std::int32_t width = -7;
        std::int32_t height = -7;
        sheet.ScaleImage(row.destWidth, row.destHeight, width, height, row.mode);
        EXPECT_EQ(width, row.width) << row.destWidth << " mode " << row.mode;
        EXPECT_EQ(height, row.height) << row.destHeight << " mode " << row.mode;
    }
    std::int32_t width = 5;
    std::int32_t height = 6;
    cPixSheet().ScaleImage(1, 1, width, height);
    EXPECT_EQ(width * 10 + height, 56);
}

std::vector<int> bluesOf(const cPixSheet& sheet) {
    std::vector<int> blues;
    for (const Pixel& pixel : pixelsOf(sheet))
        blues.push_back(pixel[0]);
    return blues;
}

TEST(Resize, LosesWhatBelongsToTheImageOrMirrorsTheWrongAxis) {
    const std::vector<Pixel> pixels = {{1, 0, 0, 9}, {2, 0, 0, 9}, {3, 0, 0, 9},
                                       {4, 0, 0, 9}, {5, 0, 0, 9}, {6, 0, 0, 9}};
    struct Row {
        std::int32_t newWidth, newHeight;
        std::vector<int> blues;
        CursorHotspot hotspot;
    };
    const Row rows[] = {
        {6, 1, {4, 4, 5, 5, 6, 6}, {4, 0}},  {0, -2, {4, 5, 6, 1, 2, 3}, {2, 0}},
        {-3, 0, {3, 2, 1, 6, 5, 4}, {0, 1}}, {-6, -2, {6, 6, 5, 5, 4, 4, 3, 3, 2, 2, 1, 1}, {1, 0}},
        {0, 2, {1, 2, 3, 4, 5, 6}, {2, 1}},
    };
    for (const Row& row : rows) {
        cPixSheet sheet;
        fill(sheet, 3, 2, pixels);
        sheet.Alpha(AlphaComplex);
        sheet.Tag(17);
        HostAccess::ImageType(sheet, imgPNG);
        HostAccess::hotspot(sheet, {2, 1});
        HostAccess::SetOriginalFormat(sheet, ByteArray({7, 8, 9}));
        ASSERT_NE(sheet.LoadDIBinDC(true), 0);
        ASSERT_TRUE(sheet.Resize(row.newWidth, row.newHeight));
        EXPECT_EQ(bluesOf(sheet), row.blues) << row.newWidth << " x " << row.newHeight;
        EXPECT_EQ(sheet.Width(), std::abs(row.newWidth == 0 ? 3 : row.newWidth));
        EXPECT_EQ(sheet.Alpha(), AlphaComplex);
        EXPECT_EQ(sheet.ImageType(), imgPNG);
        EXPECT_EQ(std::any_cast<int>(sheet.Tag()), 17);
        EXPECT_EQ(HostAccess::hotspot(sheet), row.hotspot) << row.newWidth << " x " << row.newHeight;
        ByteArray original;
        EXPECT_TRUE(sheet.GetOrginalFormat(original));
        EXPECT_NE(sheet.LoadDIBinDC(true), 0);
    }
    // Interpolated rows sit one higher, but nothing is interpolated where the picture is only mirrored.
    const std::tuple<std::int32_t, std::int32_t, std::vector<int>> smoothRows[] = {
        {-3, 2, {3, 2, 1, 6, 5, 4}},
        {3, -2, {4, 5, 6, 1, 2, 3}},
        {-3, -2, {6, 5, 4, 3, 2, 1}},
        {-3, 4, {4, 3, 2, 6, 5, 4, 6, 5, 4, 6, 5, 4}},
    };
    for (const auto& [newWidth, newHeight, blues] : smoothRows) {
        cPixSheet smooth;
        fill(smooth, 3, 2, pixels);
        smooth.HighQualityInterpolation(true);
        ASSERT_TRUE(smooth.Resize(newWidth, newHeight));
        EXPECT_EQ(bluesOf(smooth), blues) << newWidth << " x " << newHeight;
    }
}

TEST(Resize, HarmsTheImageWhenItFails) {
    cPixSheet sheet;
    EXPECT_FALSE(sheet.Resize(2, 2));
    const std::vector<Pixel> pixels = {{1, 2, 3, 255}, {4, 5, 6, 255}};
    fill(sheet, 2, 1, pixels);
    const std::uint8_t* const store = sheet.BitsPointer();
    EXPECT_TRUE(sheet.Resize(2, 1));
    EXPECT_EQ(sheet.BitsPointer(), store) << "the same size is no work";
    for (const auto& [width, height] :
         {std::pair{40000, 40000}, {least, 1}, {1, least}, {-40000, -40000}, {most, 2}, {least, least}})
        EXPECT_FALSE(sheet.Resize(width, height)) << width << " x " << height;
    {
        const platform::ScopedFault fault(platform::SeamCall::createDIBSection);
        EXPECT_FALSE(sheet.Resize(3, 3));
    }
    long after = 0;
    for (bool isResized = false; !isResized; ++after) {
        EXPECT_EQ(sheet.BitsPointer(), store);
        EXPECT_EQ(pixelsOf(sheet), pixels);
        const test::AllocationFault fault(after, -1);
        isResized = sheet.Resize(-3, 3);
    }
    EXPECT_GT(after, 2) << "no allocation failed";
    EXPECT_EQ(sheet.Width(), 3);
}

} // namespace
} // namespace pixkit
