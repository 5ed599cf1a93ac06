// Sizes from outside whose products 32-bit programs cannot hold, wherever they are counted with; and memory that is in
// no proportion to what is asked for. Small pictures all of them.
#include "codecs/ico/IcoScale.h"
#include "coding/CheckedSize.h"
#include "coding/RowBytes.h"
#include "coding/deflate/BlockCoder.h"
#include "platform/gdi.h"
#include "platform/icons.h"
#include "platform/pictures.h"
#include "platform/portable/gdi/StretchAxis.h"
#include "support/AllocationFault.h"
#include "support/QuietLoads.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

constexpr std::uint64_t greatest = std::numeric_limits<std::uint64_t>::max();

class Sizes : public QuietLoads {};

} // namespace

TEST_F(Sizes, WrapRoundInsteadOfBeingRefused) {
    const struct {
        CheckedSize size;
        bool isHeld;
    } rows[] = {{CheckedSize(1000) * 1000 + 7, true},
                {CheckedSize(CheckedSize::most), true},
                {CheckedSize(CheckedSize::most) + 1, false},
                {CheckedSize(1ULL << 32) * (1ULL << 32), false},
                {CheckedSize(greatest) * 2 + 5, false},
                {CheckedSize(greatest) + greatest, false},
                {CheckedSize(greatest) * 0, true}};
    for (const auto& row : rows) {
        EXPECT_EQ(row.size.isAtMost(CheckedSize::most), row.isHeld) << &row - rows;
        if (!row.isHeld) {
            EXPECT_THROW(row.size.inMemory(), std::bad_alloc) << &row - rows;
        }
    }
    EXPECT_EQ(packedRowBytes(1U << 27, 32), 1U << 29) << "of 2^32 bits";
    Bytes out;
    const AllocationWatch storing;
    try {
        const AllocationFault fault(0, -1);
        deflate::BlockCoder(out).store({out.data(), 1U << 29}, true); // of 2^32 bits, which are not looked at
    } catch (const std::bad_alloc&) {
        EXPECT_GT(storing.largest(), 1U << 29);
    }
    EXPECT_EQ(platform::CreateMonochromeBitmap(1 << 30, 1 << 30, nullptr), 0);
    if (sizeof(void*) == 4) { // what 64 bits have room for
        EXPECT_EQ(platform::CreateDIBSection(0, {.biWidth = 65535, .biHeight = 16384}, nullptr), 0) << "2^32 - 65536";
    }
    EXPECT_EQ(platform::StretchAxis(0, 2000000000, 3000, 1).sourceOf(1999999999), 2999U);
}

TEST_F(Sizes, OfAnIconAndItsPictureTogetherWrapRound) {
    const struct {
        std::size_t width, height, iconWidth, iconHeight, placeWidth, placeHeight;
    } places[] = {{20000000, 1, 256, 256, 256, 1},
                  {1, 20000000, 256, 256, 1, 256},
                  {23170, 23170, 65535, 8191, 8191, 8191},
                  {536870911, 1, 65535, 2, 65535, 1}};
    for (const auto& row : places) {
        const ConstPixelView source{nullptr, row.width, row.height, row.width * 4};
        const IcoPlacement place = icoPlacement(source, row.iconWidth, row.iconHeight);
        EXPECT_EQ(place.width, row.placeWidth) << row.width;
        EXPECT_EQ(place.height, row.placeHeight) << row.width;
    }
    // From black to white, means of several pixels and points between two.
    for (const std::size_t width : {131072U, 40000U}) {
        Bytes ramp(width * 4);
        for (std::size_t i = 0; i < ramp.size(); ++i)
            ramp[i] = static_cast<std::uint8_t>(i / 4 * 255 / (width - 1));
        // The flatter picture has one row, of the other both are alike.
        Bytes scaled = icoScale({ramp.data(), width, 1, width * 4}, true, 65535, width == 40000 ? 2 : 1);
        scaled.resize(std::size_t{65535} * 4);
        EXPECT_TRUE(std::ranges::is_sorted(scaled)) << width;
        EXPECT_EQ(scaled.front(), 0);
        EXPECT_GE(scaled.back(), 254);
    }
}

// Of all that is taken but the pixels of images.
TEST_F(Sizes, MoreMemoryIsTakenThanIsInUse) {
    constexpr std::size_t enough = 2 << 20;
    cPixSheet sheet;
    sheet.HighQualityInterpolation(true);
    ASSERT_TRUE(sheet.InitializeDIB(1 << 20, 1));
    const AllocationWatch resizing;
    EXPECT_TRUE(sheet.Resize(1060000, 1));
    EXPECT_LT(resizing.largest(), enough) << "for a row at once";
    for (const std::int32_t width : {530000, 7777, 1 << 20}) {
        const AllocationWatch resampling;
        EXPECT_TRUE(sheet.Resample(width, 1));
        EXPECT_LT(resampling.largest(), enough / 2) << width;
    }
    for (const std::int32_t width : {1, 1 << 20}) {
        ASSERT_TRUE(sheet.InitializeDIB(width, (1 << 20) / width));
        const AllocationWatch resampling;
        EXPECT_TRUE(sheet.Resample(1, 1));
        EXPECT_LT(resampling.largest(), enough / 2) << width << " columns to one pixel";
    }
    if (platform::canLoadMetafiles()) return; // the system's loader decides what it looks at
    const TemporaryFolder folder;
    writeFile(folder.path(u8"none.bin"), Bytes(100, 'x'));
    std::filesystem::resize_file(folder.path(u8"none.bin"), 64 << 20);
    const AllocationWatch loading;
    EXPECT_FALSE(sheet.LoadPicture_File(folder.name(u8"none.bin")));
    EXPECT_EQ(sheet.LastErrorText(), "no format known here begins like this");
    EXPECT_LT(loading.largest(), enough) << "for a file that is no picture";
}
// SPDX-License-Identifier: MIT
