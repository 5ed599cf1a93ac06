// Regions in the hands of a client: as the shape of a window, and what is left of them.
#include "Server.h"
#include "platform/faults.h"
#include "platform/regions.h"
#include "support/Pictures.h"

namespace pixkit::test {

using Regions = ComTest;

TEST_F(Regions, AreNoShapeForAWindow) {
    ASSERT_TRUE(makeImage(70, 3));
    for (LONG x = 0; x < 70; x += 2)
        setPixel(x, x % 3, 255);
    LONG_PTR region = 0, same = 0;
    sheet->CreateRegion(::regionShaped, 255, &region);
    sheet->CreateRegion(::regionShaped, 255, &same);
    const HWND window = ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 70, 3, nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(::SetWindowRgn(window, reinterpret_cast<HRGN>(region), FALSE), 0);
    const platform::UniqueRegion expected(same), shape(platform::ExtCreateRegion({}));
    EXPECT_EQ(::GetWindowRgn(window, reinterpret_cast<HRGN>(shape.get())), COMPLEXREGION);
    EXPECT_TRUE(::EqualRgn(reinterpret_cast<HRGN>(shape.get()), reinterpret_cast<HRGN>(expected.get())));
    EXPECT_EQ(platform::GetRegionData(shape.get()), 35u);
    ::DestroyWindow(window);
}

TEST_F(Regions, StayBehind) {
    ASSERT_TRUE(makeImage(8, 8));
    setPixel(1, 1, 0);
    const std::size_t before = platform::openHandles();
    LONG_PTR held = 0;
    sheet->CreateRegion(::regionShaped, 255, &held);
    EXPECT_GT(platform::openHandles(), before) << "the count tells nothing";
    EXPECT_TRUE(platform::DeleteObject(held));
    for (int cycle = 0; cycle < 10'000; ++cycle) {
        Variant region;
        ASSERT_EQ(call(sheet.get(), L"CreateRegion", {number(cycle % 3)}, &region), S_OK);
        ::VariantChangeType(&region, &region, 0, VT_I8);
        ASSERT_TRUE(platform::DeleteObject(static_cast<platform::Handle>(region.llVal)));
    }
    EXPECT_EQ(platform::openHandles(), before);
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
