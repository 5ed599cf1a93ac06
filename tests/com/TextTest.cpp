// Text with the font handles and font objects that hosts have.
#include "Fonts.h"
#include "LateObject.h"
#include "Server.h"
#include "support/Pictures.h"
#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>

namespace pixkit::test {
namespace {

class TextComTest : public ComTest {
  protected:
    TextComTest() {
        makeFont(12, IID_IFont, font.putVoid());
        font->QueryInterface(IID_IFontDisp, display.putVoid());
        sheet->put_isGDIplusEnabled(VARIANT_FALSE);
        sheet->put_Unattended(VARIANT_TRUE);
    }

    LONG_PTR handle() {
        HFONT found = nullptr;
        font->get_hFont(&found);
        return reinterpret_cast<LONG_PTR>(found);
    }
    // What is on the image after `draw`, in one string; empty when that failed.
    std::string drawnBy(const std::function<HRESULT(VARIANT_BOOL* isDrawn)>& draw) {
        VARIANT_BOOL isDrawn = VARIANT_FALSE;
        makeImage(side, side);
        EXPECT_EQ(draw(&isDrawn), S_OK);
        if (isDrawn != VARIANT_TRUE) return {};
        LONG_PTR bits = 0;
        sheet->get_BitsPointer(&bits);
        return {reinterpret_cast<const char*>(bits), std::size_t{side} * side * 4};
    }
    std::string drawnWith(IUnknown* object) {
        return drawnBy([&](VARIANT_BOOL* isDrawn) {
            auto* given = reinterpret_cast<IFontDisp*>(object);
            return sheet->DrawText_stdFont(0, &given, words, 3, 5, 0, 0, 0xFF, 100, ::txtLeft, VARIANT_FALSE, 0,
                                           nullptr, isDrawn);
        });
    }
    std::wstring lastError() {
        Variant error;
        sheet->get_LastErrorText(&error.bstrVal);
        error.vt = VT_BSTR;
        return error.bstrVal;
    }

    static constexpr LONG side = 80;
    BSTR words = text(L"Words\r\nmore").bstrVal;
    ComPtr<IFont> font;
    ComPtr<IFontDisp> display;
};

TEST_F(TextComTest, DrawsDifferentlyWithTheSameFontGivenInAnotherWay) {
    const std::string expected = drawnBy([&](VARIANT_BOOL* isDrawn) {
        return sheet->DrawText_hFont(0, handle(), words, 3, 5, 0, 0, 0xFF, 100, ::txtLeft, VARIANT_FALSE, 0, nullptr,
                                     isDrawn);
    });
    ASSERT_FALSE(expected.empty()) << lastError().c_str();
    EXPECT_NE(expected, std::string(expected.size(), '\0'));
    EXPECT_EQ(drawnWith(display.get()), expected);
    // Of an object that is none of the system's, what it says of itself counts.
    const auto says = [](VARIANT value) {
        return [value](const DISPPARAMS&, VARIANT& result) mutable { return ::VariantCopy(&result, &value); };
    };
    VARIANT size{};
    size.vt = VT_CY;
    size.cyVal.int64 = 12'0000;
    for (const bool isScript : {false, true}) {
        LateObject own({{L"Name", says(text(L"Tahoma"))}, {L"Size", says(size)}}, isScript);
        EXPECT_EQ(drawnWith(&own), expected);
        EXPECT_EQ(own.references, 1u);
        LateObject bold({{L"Name", says(text(L"Tahoma"))}, {L"Size", says(size)}, {L"Bold", says(number(-1))}},
                        isScript);
        const std::string drawn = drawnWith(&bold);
        EXPECT_TRUE(!drawn.empty() && drawn != expected);
    }
    font->put_Bold(TRUE);
    EXPECT_NE(drawnWith(display.get()), expected);
    font->put_Bold(FALSE);
    // Late bound, by name, and in a script's variables.
    VARIANT late = object(display.get());
    EXPECT_EQ(drawnBy([&](VARIANT_BOOL* isDrawn) {
                  Variant result;
                  const HRESULT status = call(sheet.get(), L"DrawText_stdFont",
                                              {number(0), variable(late), text(L"Words\r\nmore"), number(3), number(5)},
                                              &result, {{L"Color", number(0xFF)}, {L"Alignment", number(::txtLeft)}});
                  *isDrawn = result.boolVal;
                  return status;
              }),
              expected);
    VARIANT wide = number(0), high = number(0);
    EXPECT_TRUE(isTrue(sheet.get(), L"MeasureText_stdFont",
                       {variable(late), text(L"Words\r\nmore"), variable(wide), variable(high)}));
    LONG width = 0, height = 0;
    VARIANT_BOOL isMeasured = VARIANT_FALSE;
    sheet->MeasureText_hFont(handle(), words, &width, &height, 0, VARIANT_FALSE, ::txtLeft, &isMeasured);
    EXPECT_TRUE(isMeasured == VARIANT_TRUE && width > 30 && height > 30);
    EXPECT_EQ(std::pair(wide.lVal, high.lVal), std::pair(width, height));
}

// White text on nothing is its coverage: the mean of what GDI draws with ClearType, white on black, at the same places.
TEST_F(TextComTest, DrawsOtherGlyphsThanGdi) {
    const std::string line = "Hamburgefonstiv gjpqy AVAT";
    const std::wstring wide(line.begin(), line.end());
    for (const int pixels : {9, 12, 24, 72}) {
        const HFONT hFont =
            ::CreateFontW(-pixels, 0, 0, 0, FW_NORMAL, 0, 0, 0, 0, 0, 0, CLEARTYPE_QUALITY, 0, L"Tahoma");
        const auto handle = reinterpret_cast<std::intptr_t>(hFont);
        cPixSheet ours, gdis;
        std::int32_t end = 0, height = 0;
        std::vector<int> advances;
        for (std::size_t i = 1; i <= line.size(); ++i) {
            const std::int32_t before = end;
            EXPECT_TRUE(ours.MeasureText_hFont(handle, line.substr(0, i), end, height));
            advances.push_back(end - before);
        }
        for (cPixSheet* const one : {&ours, &gdis})
            one->InitializeDIB(1300, 100);
        ASSERT_TRUE(ours.DrawText_hFont(0, handle, line, 4, 4, 0, 0, 0xFFFFFF));
        const HDC dc = reinterpret_cast<HDC>(gdis.LoadDIBinDC(true));
        ::SelectObject(dc, hFont);
        ::SetTextColor(dc, RGB(255, 255, 255));
        ::SetBkMode(dc, TRANSPARENT);
        ::ExtTextOutW(dc, 4, 4, 0, nullptr, wide.c_str(), static_cast<UINT>(wide.size()), advances.data());
        ::GdiFlush();
        int greatest = 0, ink = 0;
        const auto drawn = pixelsOf(ours), own = pixelsOf(gdis);
        for (std::size_t i = 0; i < drawn.size(); ++i) {
            const int coverage = (own[i][0] + own[i][1] + own[i][2] + 1) / 3;
            ink += coverage;
            greatest = std::max({greatest, std::abs(coverage - drawn[i][0]), std::abs(coverage - drawn[i][3])});
        }
        EXPECT_LE(greatest, 1) << pixels;
        EXPECT_GT(ink, 100 * pixels * pixels);
        gdis.DestroyDIB();
        ::DeleteObject(hFont);
    }
}

TEST_F(TextComTest, TakesOtherObjectsForFonts) {
    LateObject nameless({{L"Size", [](const DISPPARAMS&, VARIANT&) { return DISP_E_EXCEPTION; }}});
    for (IUnknown* const wrong : std::initializer_list<IUnknown*>{nullptr, sheet.get(), &nameless}) {
        EXPECT_EQ(drawnWith(wrong), "");
        EXPECT_EQ(lastError(), L"the object is no font");
        auto* given = reinterpret_cast<IFontDisp*>(wrong);
        LONG width = 7, height = 8;
        VARIANT_BOOL isMeasured = VARIANT_TRUE;
        EXPECT_EQ(sheet->MeasureText_stdFont(&given, words, &width, &height, 0, VARIANT_FALSE, ::txtLeft, &isMeasured),
                  S_OK);
        EXPECT_TRUE(isMeasured == VARIANT_FALSE && width == 7 && height == 8);
    }
}

// The font's code lets go of the last reference to the object that draws, or that is drawn on.
TEST_F(TextComTest, GoesAwayWhileAFontIsAsked) {
    for (const bool isHost : {false, true}) {
        _cPixSheet* gone = server.create();
        VARIANT_BOOL isDone = VARIANT_FALSE;
        gone->InitializeDIB(20, 20, &isDone);
        makeImage(20, 20);
        LateObject fleeting({{L"Name",
                              [&](const DISPPARAMS&, VARIANT& result) {
                                  gone->Release();
                                  result = text(L"Tahoma");
                                  return S_OK;
                              }},
                             {L"Size", [](const DISPPARAMS&, VARIANT& result) {
                                  result = number(9);
                                  return S_OK;
                              }}});
        auto* given = reinterpret_cast<IFontDisp*>(static_cast<IUnknown*>(&fleeting));
        _cPixSheet* host = isHost ? gone : sheet.get();
        _cPixSheet* const drawing = isHost ? sheet.get() : gone;
        EXPECT_EQ(drawing->DrawText_stdFont(0, &given, words, 0, 0, 0, 0, 0xFF, 100, ::txtLeft, VARIANT_FALSE, 0, &host,
                                            &isDone),
                  S_OK);
        EXPECT_EQ(isDone, VARIANT_TRUE);
    }
}

TEST_F(TextComTest, SmoothsOrLosesABitmapFontAndStopsAtOddText) {
    const HFONT bitmap = ::CreateFontW(-11, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, L"MS Sans Serif");
    for (const auto& [line, angle] : {std::pair("Bitmap", 0.0F),
                                      {"Bitmap", 90.0F},
                                      {"Bitmap", 33.0F},
                                      {"", 0.0F},
                                      {"\xED\xB0\x80\xE2\x80\xAE\xCC\x81", 0.0F}}) {
        cPixSheet drawn;
        drawn.InitializeDIB(side, side);
        EXPECT_TRUE(drawn.DrawText_hFont(0, reinterpret_cast<std::intptr_t>(bitmap), line, 20, 20, 0, 0, 0xFFFFFF, 100,
                                         ::txtLeft, false, angle));
        const auto pixels = pixelsOf(drawn);
        EXPECT_TRUE(*line != 'B' || std::ranges::count(pixels, Pixel{255, 255, 255, 255}) > 0) << angle;
        EXPECT_EQ(drawn.Alpha(), angle == 33 ? AlphaComplex : AlphaSimple);
    }
    ::DeleteObject(bitmap);
}

} // namespace
} // namespace pixkit::test
// SPDX-License-Identifier: MIT
