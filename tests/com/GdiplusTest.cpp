// GDI+ in the component, with the library that the system has, or without one.
#include "platform/gdiplus.h"
#include "Server.h"
#include "platform/faults.h"
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

// What it lacks the component's own readers and writers do without.
TEST_F(GdiplusComTest, AStreamThatCannotBeMadeCostsTheFile) {
    platform::setGdiplusProvider({}); // the system's own
    const std::size_t handles = platform::openHandles();
    for (const auto failing : {platform::SeamCall::globalAlloc, platform::SeamCall::globalLock,
                               platform::SeamCall::createStream, platform::SeamCall::gdiplus}) {
        for (const int after : {0, 1, 2}) {
            const platform::ScopedFault fault(failing, after);
            cPixSheet picture, again;
            ByteArray png, jpg;
            test::draw(picture, 4, 4, AlphaNone, [](unsigned x, unsigned y) {
                return Pixel{static_cast<std::uint8_t>(60 * x), static_cast<std::uint8_t>(60 * y), 99, 255};
            });
            picture.isGDIplusEnabled(true);
            EXPECT_TRUE(picture.SaveToStream_PNG(png) && picture.SaveToStream_JPG(jpg));
            EXPECT_TRUE(again.LoadPicture_Stream(png, 32, 32, 0, 0, true));
            EXPECT_EQ(pixelsOf(again), pixelsOf(picture));
            again.LoadPicture_Stream(jpg); // for which there is the system's loader alone
        }
        EXPECT_TRUE(platform::callsMade(failing) > 0 || !hasGdiplus()) << "not asked";
    }
    EXPECT_EQ(platform::openHandles(), handles);
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
