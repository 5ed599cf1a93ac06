// Text with the font handles and font objects that hosts have.
#include "Fonts.h"
#include "LateObject.h"
#include "Server.h"
#include <algorithm>
#include <cstdlib>
#include <cwchar>
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
            return sheet->DrawText_stdFont(0, &given, words, 3, 5, 0, 0, 0xFF, 100, txtLeft, VARIANT_FALSE, 0, nullptr,
                                           isDrawn);
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
        return sheet->DrawText_hFont(0, handle(), words, 3, 5, 0, 0, 0xFF, 100, txtLeft, VARIANT_FALSE, 0, nullptr,
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
                                              &result, {{L"Color", number(0xFF)}, {L"Alignment", number(txtLeft)}});
                  *isDrawn = result.boolVal;
                  return status;
              }),
              expected);
    VARIANT wide = number(0), high = number(0);
    EXPECT_TRUE(isTrue(sheet.get(), L"MeasureText_stdFont",
                       {variable(late), text(L"Words\r\nmore"), variable(wide), variable(high)}));
    LONG width = 0, height = 0;
    VARIANT_BOOL isMeasured = VARIANT_FALSE;
    sheet->MeasureText_hFont(handle(), words, &width, &height, 0, VARIANT_FALSE, txtLeft, &isMeasured);
    EXPECT_TRUE(isMeasured == VARIANT_TRUE && width > 30 && height > 30);
    EXPECT_EQ(std::pair(wide.lVal, high.lVal), std::pair(width, height));
}

// White text on nothing is its coverage: the mean of what GDI draws with ClearType, white on black, at the same places.
TEST_F(TextComTest, DrawsOtherGlyphsThanGdi) {
    constexpr int width = 1300, height = 100, length = 26;
    const std::wstring line = L"Hamburgefonstiv gjpqy AVAT";
    for (const int pixels : {9, 12, 24, 72}) {
        LOGFONTW record{};
        record.lfHeight = -pixels;
        record.lfQuality = CLEARTYPE_QUALITY;
        std::wcscpy(record.lfFaceName, L"Tahoma");
        const HFONT hFont = ::CreateFontIndirectW(&record);
        const auto asHandle = reinterpret_cast<LONG_PTR>(hFont);
        VARIANT_BOOL isDone = VARIANT_FALSE;
        int advances[length];
        LONG end = 0;
        for (int i = 0; i < length; ++i) {
            LONG before = end, lineHeight = 0;
            sheet->MeasureText_hFont(asHandle, text(line.substr(0, i + 1).c_str()).bstrVal, &end, &lineHeight, 0,
                                     VARIANT_FALSE, txtLeft, &isDone);
            advances[i] = end - before;
        }
        makeImage(width, height);
        sheet->DrawText_hFont(0, asHandle, text(line.c_str()).bstrVal, 4, 4, 0, 0, 0xFFFFFF, 100, txtLeft,
                              VARIANT_FALSE, 0, nullptr, &isDone);
        ASSERT_EQ(isDone, VARIANT_TRUE);
        LONG_PTR bits = 0;
        sheet->get_BitsPointer(&bits);
        const auto* const drawn = reinterpret_cast<const unsigned char*>(bits);

        BITMAPINFO info{};
        info.bmiHeader = {sizeof info.bmiHeader, width, height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        void* memory = nullptr;
        const HDC dc = ::CreateCompatibleDC(nullptr);
        const HBITMAP bitmap = ::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &memory, nullptr, 0);
        ::SelectObject(dc, bitmap);
        ::SelectObject(dc, hFont);
        ::SetTextColor(dc, RGB(255, 255, 255));
        ::SetBkMode(dc, TRANSPARENT);
        ::ExtTextOutW(dc, 4, 4, 0, nullptr, line.c_str(), length, advances);
        ::GdiFlush();
        const auto* const own = static_cast<const unsigned char*>(memory);
        int greatest = 0, ink = 0;
        for (int i = 0; i < 4 * width * height; i += 4) {
            const int coverage = (own[i] + own[i + 1] + own[i + 2] + 1) / 3;
            ink += coverage;
            greatest = std::max({greatest, std::abs(coverage - drawn[i]), std::abs(coverage - drawn[i + 3])});
        }
        EXPECT_LE(greatest, 1) << pixels;
        EXPECT_GT(ink, 100 * pixels * pixels);
        ::DeleteDC(dc);
        ::DeleteObject(bitmap);
        ::DeleteObject(hFont);
    }
}

TEST_F(TextComTest, TakesOtherObjectsForFonts) {
    LateObject nameless({{L"Size", [](const DISPPARAMS&, VARIANT&) { return DISP_E_EXCEPTION; }}});
    for (IUnknown* const wrong :
         {static_cast<IUnknown*>(nullptr), static_cast<IUnknown*>(sheet.get()), static_cast<IUnknown*>(&nameless)}) {
        EXPECT_EQ(drawnWith(wrong), "");
        EXPECT_EQ(lastError(), L"the object is no font");
        auto* given = reinterpret_cast<IFontDisp*>(wrong);
        LONG width = 7, height = 8;
        VARIANT_BOOL isMeasured = VARIANT_TRUE;
        EXPECT_EQ(sheet->MeasureText_stdFont(&given, words, &width, &height, 0, VARIANT_FALSE, txtLeft, &isMeasured),
                  S_OK);
        EXPECT_EQ(isMeasured, VARIANT_FALSE);
        EXPECT_EQ(std::pair(width, height), std::pair(7L, 8L));
    }
    EXPECT_EQ(drawnBy([&](VARIANT_BOOL* isDrawn) {
                  return sheet->DrawText_hFont(0, reinterpret_cast<LONG_PTR>(::GetStockObject(BLACK_PEN)), words, 0, 0,
                                               0, 0, 0, 100, txtLeft, VARIANT_FALSE, 0, nullptr, isDrawn);
              }),
              "");
    EXPECT_EQ(
        sheet->DrawText_stdFont(0, nullptr, words, 0, 0, 0, 0, 0, 100, txtLeft, VARIANT_FALSE, 0, nullptr, nullptr),
        E_POINTER);
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
        EXPECT_EQ(drawing->DrawText_stdFont(0, &given, words, 0, 0, 0, 0, 0xFF, 100, txtLeft, VARIANT_FALSE, 0, &host,
                                            &isDone),
                  S_OK);
        EXPECT_EQ(isDone, VARIANT_TRUE);
    }
}

TEST_F(TextComTest, SmoothsOrLosesABitmapFontAndStopsAtOddText) {
    const HFONT bitmap = ::CreateFontW(-11, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, L"MS Sans Serif");
    std::wstring longText(1 << 20, L'm');
    longText[100'000] = 0xD800; // alone
    longText[100'001] = L'\t';
    struct {
        const wchar_t* text;
        float angle;
        ::AlphaTypeEnum alpha;
    } const rows[] = {{L"Bitmap", 0, AlphaSimple},   {L"Bitmap", 90, AlphaSimple},
                      {L"Bitmap", 33, AlphaComplex}, {longText.c_str(), 0, AlphaSimple},
                      {L"", 0, AlphaSimple},         {L"\xDC00\x202E\x0301", 0, AlphaSimple}};
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.text, row.text + std::min<std::size_t>(std::wcslen(row.text), 9)));
        const std::string pixels = drawnBy([&](VARIANT_BOOL* isDrawn) {
            return sheet->DrawText_hFont(0, reinterpret_cast<LONG_PTR>(bitmap), text(row.text).bstrVal, 20, 20, 0, 0,
                                         0xFFFFFF, 100, txtLeft, VARIANT_FALSE, row.angle, nullptr, isDrawn);
        });
        EXPECT_FALSE(pixels.empty());
        EXPECT_TRUE(*row.text != L'B' || pixels.find('\xFF') != pixels.npos);
        ::AlphaTypeEnum alpha = AlphaNone;
        sheet->get_Alpha(&alpha);
        EXPECT_EQ(alpha, row.alpha);
    }
    ::DeleteObject(bitmap);
}

} // namespace
} // namespace pixkit::test
