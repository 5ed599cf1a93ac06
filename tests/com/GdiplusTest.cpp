// GDI+ in the component, with the library that the system has, or without one.
#include "platform/gdiplus.h"
#include "Server.h"
#include "support/Pictures.h"

namespace pixkit::test {
namespace {

bool hasGdiplus() {
    const HMODULE library = ::LoadLibraryW(L"gdiplus.dll");
    return library != nullptr && ::FreeLibrary(library) != FALSE;
}

using GdiplusComTest = ComTest;

TEST_F(GdiplusComTest, KeepsTheLibraryOrGoesWithoutEndingATokensGdiplus) {
    EXPECT_EQ(isTrue(sheet.get(), L"isGDIplusEnabled"), hasGdiplus());
    LONG token = 0;
    sheet->CreateGDIplusToken(&token);
    EXPECT_EQ(token != 0, hasGdiplus());
    makeImage(3, 3);
    sheet.reset();
    EXPECT_EQ(server.canUnload(), token == 0) << "nobody else can end it";
    *sheet.put() = server.create();
    VARIANT_BOOL isEnded = VARIANT_FALSE;
    sheet->DestroyGDIplusToken(token, &isEnded);
    EXPECT_EQ(isEnded == VARIANT_TRUE, token != 0);
    sheet.reset();
    EXPECT_TRUE(server.canUnload());
    EXPECT_EQ(::GetModuleHandleW(L"gdiplus.dll"), nullptr) << "not given back";
}

// By GDI+ or without, onto hosts and device contexts, and nothing beside it.
TEST_F(GdiplusComTest, DrawsOtherPixelsThanWithoutGdiplus) {
    platform::setGdiplusProvider({}); // the system's own
    struct Row {
        std::int32_t width, opacity, gray;
        float light, angle;
    };
    for (const Row& row : {Row{4, 100, gsclNone, 0, 0}, Row{4, 50, gsclNone, 0, 0}, Row{-4, 100, gsclNTSCPAL, 10, 0},
                           Row{4, 100, gsclNone, 0, 90}}) {
        for (const bool ontoContext : {false, true}) {
            std::vector<Pixel> drawn[2];
            for (const bool isEnabled : {true, false}) {
                cPixSheet picture, host;
                test::draw(picture, 4, 4, AlphaNone, [](unsigned x, unsigned y) {
                    const auto value = [&](unsigned step) { return static_cast<std::uint8_t>((4 * y + x) * step); };
                    return Pixel{value(5), value(11), value(13), 255};
                });
                host.InitializeDIB(8, 8);
                picture.isGDIplusEnabled(isEnabled);
                picture.KeepGDIplusActive(true); // not by AlphaBlend
                EXPECT_TRUE(picture.Render(host.LoadDIBinDC(ontoContext), 2, 2, row.width, 0, 0, 0, 0, 0, row.opacity,
                                           true, true, ontoContext ? nullptr : &host, row.gray, row.light, row.angle));
                host.LoadDIBinDC(false);
                drawn[isEnabled ? 1 : 0] = pixelsOf(host);
            }
            for (std::size_t i = 0; i < 64 * 3; ++i)
                EXPECT_NEAR(drawn[0][i / 3][i % 3], drawn[1][i / 3][i % 3], 2)
                    << i << " at angle " << row.angle << ", opacity " << row.opacity << ", context " << ontoContext;
        }
    }
    platform::setGdiplusProvider([] { return platform::GdiplusApi(); });
}

} // namespace
} // namespace pixkit::test
// SPDX-License-Identifier: MIT
