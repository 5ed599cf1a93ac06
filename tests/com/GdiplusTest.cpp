// GDI+ in the component, with the library that the system has, or without one.
#include "Server.h"

namespace pixkit::test {
namespace {

bool hasGdiplus() {
    const HMODULE library = ::LoadLibraryW(L"gdiplus.dll");
    return library != nullptr && ::FreeLibrary(library) != FALSE;
}

using GdiplusComTest = ComTest;

TEST_F(GdiplusComTest, IsOffOrOnAtStartOnTheWrongSystem) {
    VARIANT_BOOL isEnabled = VARIANT_FALSE, interpolates = VARIANT_FALSE, isKept = VARIANT_FALSE;
    sheet->get_isGDIplusEnabled(&isEnabled);
    sheet->get_HighQualityInterpolation(&interpolates);
    sheet->put_KeepGDIplusActive(VARIANT_TRUE);
    sheet->get_KeepGDIplusActive(&isKept);
    EXPECT_EQ(isEnabled == VARIANT_TRUE, hasGdiplus());
    EXPECT_EQ(interpolates, isEnabled);
    EXPECT_EQ(isKept, isEnabled);
}

TEST_F(GdiplusComTest, KeepsTheLibraryOrGoesWithoutEndingATokensGdiplus) {
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

// What is drawn comes out alike, by GDI+ or without.
TEST_F(GdiplusComTest, DrawsOtherPixelsThanWithoutGdiplus) {
    for (const float angle : {0.0F, 90.0F}) {
        LONG colors[2][16];
        for (const bool isEnabled : {true, false}) {
            ASSERT_TRUE(makeImage(4, 4));
            for (LONG i = 0; i < 16; ++i)
                setPixel(i % 4, i / 4, i * 0x050B0D);
            sheet->put_isGDIplusEnabled(isEnabled ? VARIANT_TRUE : VARIANT_FALSE);
            ComPtr<_cPixSheet> host;
            *host.put() = server.create();
            VARIANT_BOOL isDone = VARIANT_FALSE;
            host->InitializeDIB(4, 4, &isDone);
            _cPixSheet* onto = host.get();
            EXPECT_EQ(sheet->Render(0, 0, 0, -4, 0, 0, 0, 0, 0, 100, VARIANT_TRUE, VARIANT_TRUE, &onto, gsclNTSCPAL, 10,
                                    angle, VARIANT_FALSE, &isDone),
                      S_OK);
            EXPECT_EQ(isDone, VARIANT_TRUE);
            for (LONG i = 0; i < 16; ++i)
                host->GetPixel(i % 4, i / 4, nullptr, nullptr, &colors[isEnabled ? 1 : 0][i]);
        }
        for (LONG i = 0; i < 16; ++i)
            EXPECT_NEAR(colors[0][i] & 0xFF, colors[1][i] & 0xFF, 2) << i;
    }
}

} // namespace
} // namespace pixkit::test
