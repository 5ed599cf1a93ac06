#include "platform/regions.h"
#include "platform/Bitmaps.h"
#include "platform/faults.h"
#include <algorithm>
#include <gtest/gtest.h>

using namespace pixkit::platform;
using namespace pixkit::test;

namespace {

std::vector<Rect> rectanglesOf(Handle region) {
    std::vector<Rect> rectangles(GetRegionData(region));
    EXPECT_EQ(GetRegionData(region, rectangles), rectangles.size());
    return rectangles;
}

} // namespace

TEST(Regions, RectanglesComeBackAsTheyWere) {
    std::vector<Rect> grid; // more than any side makes at once, in bands of two heights with gaps between some
    for (std::int32_t y = 0; y < 40; ++y)
        for (std::int32_t x = y % 2; x < 50; ++x)
            grid.push_back({3 * x - 7, 5 * y + y % 3, 3 * x - 5, 5 * y + 4});
    const struct {
        std::vector<Rect> rectangles;
        RegionKind kind;
        Rect box;
    } rows[] = {
        {{}, RegionKind::empty, {}},
        {{{-3, 2, 70000, 5}}, RegionKind::simple, {-3, 2, 70000, 5}},
        {{{4, 1, 6, 2}, {1, 2, 3, 9}, {5, 2, 6, 9}, {2, 9, 4, 10}}, RegionKind::complex, {1, 1, 6, 10}},
        {grid, RegionKind::complex, {-7, 0, 142, 199}},
    };
    for (const auto& [rectangles, kind, box] : rows) {
        SCOPED_TRACE(rectangles.size());
        const UniqueRegion region(ExtCreateRegion(rectangles));
        ASSERT_EQ(GetObjectType(region.get()), ObjectType::region);
        EXPECT_EQ(rectanglesOf(region.get()), rectangles);
        Rect found{1, 2, 3, 4};
        EXPECT_EQ(GetRgnBox(region.get(), found), kind);
        EXPECT_EQ(found, box);
    }
}

TEST(Regions, OtherHandlesAreTakenForRegions) {
    const UniqueBitmap bitmap = makeBitmap(2, 2, 32);
    const Handle stale = UniqueRegion(ExtCreateRegion({})).get();
    for (const Handle handle : {Handle{0}, Handle{-1}, bitmap.get(), stale}) {
        SCOPED_TRACE(handle);
        Rect box{1, 2, 3, 4};
        EXPECT_EQ(GetRgnBox(handle, box), RegionKind::error);
        EXPECT_EQ(box, (Rect{1, 2, 3, 4}));
        EXPECT_EQ(GetRegionData(handle, {&box, 1}), 0u);
        EXPECT_FALSE(PtInRegion(handle, 1, 1) || (handle != bitmap.get() && DeleteObject(handle)));
    }
    const Rect one{0, 0, 1, 1}, other{1, 2, 3, 4};
    const UniqueRegion region(ExtCreateRegion({&one, 1}));
    for (const int after : {0, 1}) {
        const ScopedFault fault(SeamCall::getRegionData, after);
        Rect place = other;
        const bool isGiven = GetRegionData(region.get(), {&place, 1}) != 0;
        EXPECT_EQ(place, isGiven ? one : other) << after;
    }
    BitmapRecord record;
    EXPECT_FALSE(GetObjectA(region.get(), record) || DeleteDC(region.get()));
    EXPECT_EQ(GetObjectType(region.get()), ObjectType::region);
}
// SPDX-License-Identifier: MIT
