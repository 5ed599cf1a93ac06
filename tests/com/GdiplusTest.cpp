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

// What is drawn comes out alike, by GDI+ or without, onto hosts and device contexts, and nothing beside it.
TEST_F(GdiplusComTest, DrawsOtherPixelsThanWithoutGdiplus) {
    constexpr LONG side = 8;
    struct Row {
        LONG width, opacity;
        eGrayScaleFormulas gray;
        float light, angle;
    };
    for (const Row& row : {Row{4, 100, gsclNone, 0, 0}, Row{4, 50, gsclNone, 0, 0}, Row{-4, 100, gsclNTSCPAL, 10, 0},
                           Row{4, 100, gsclNone, 0, 90}}) {
        for (const bool ontoContext : {false, true}) {
            LONG colors[2][side * side];
            for (const bool isEnabled : {true, false}) {
                ASSERT_TRUE(makeImage(4, 4));
                for (LONG i = 0; i < 16; ++i)
                    setPixel(i % 4, i / 4, i * 0x050B0D);
                sheet->put_isGDIplusEnabled(isEnabled ? VARIANT_TRUE : VARIANT_FALSE);
                sheet->put_KeepGDIplusActive(VARIANT_TRUE); // not by AlphaBlend
                ComPtr<_cPixSheet> host;
                *host.put() = server.create();
                VARIANT_BOOL isDone = VARIANT_FALSE;
                host->InitializeDIB(side, side, &isDone);
                LONG_PTR dc = 0;
                if (ontoContext) host->LoadDIBinDC(VARIANT_TRUE, &dc);
                _cPixSheet* onto = ontoContext ? nullptr : host.get();
                EXPECT_EQ(sheet->Render(dc, 2, 2, row.width, 0, 0, 0, 0, 0, row.opacity, VARIANT_TRUE, VARIANT_TRUE,
                                        &onto, row.gray, row.light, row.angle, VARIANT_FALSE, &isDone),
                          S_OK);
                EXPECT_EQ(isDone, VARIANT_TRUE);
                for (LONG i = 0; i < side * side; ++i) {
                    VARIANT_BOOL asStored = VARIANT_TRUE;
                    host->GetPixel(i % side, i / side, nullptr, &asStored, &colors[isEnabled ? 1 : 0][i]);
                }
            }
            for (LONG i = 0; i < side * side; ++i) {
                for (const int shift : {0, 8, 16})
                    EXPECT_NEAR(colors[0][i] >> shift & 0xFF, colors[1][i] >> shift & 0xFF, 2)
                        << i << " at angle " << row.angle << ", opacity " << row.opacity << ", context " << ontoContext;
            }
        }
    }
}

} // namespace
} // namespace pixkit::test
