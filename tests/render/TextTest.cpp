// Text: lines and places, by a font of the tests' own; drawing by the rules of blending; and the system's fonts, where
// there are any.
#include "render/Canvas.h"
#include "render/TextDrawing.h"
#include "support/Pictures.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <utility>

namespace pixkit::test {
namespace {

using namespace std::string_literals;

constexpr std::int32_t characterWidth = 5, ascent = 8, descent = 2;

// Every character is 5 x 10 pixels, of which an accent takes its share; lines may end behind hyphens. Cells are filled
// with a pattern.
class GridLine final : public platform::TextLine {
  public:
    explicit GridLine(std::u32string_view itsText) : text(itsText) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            const bool isAccent = text[i] == 0x301;
            if (!isAccent) cells += text[i];
            m_characters.push_back({characterWidth, i > 0 && text[i - 1] == U'-', !isAccent});
            if (isAccent) m_characters[i].advance = std::exchange(m_characters[i - 1].advance, 3) - 3;
        }
    }
    std::int32_t width() const noexcept override { return static_cast<std::int32_t>(cells.size()) * characterWidth; }
    std::span<const Character> characters() const noexcept override { return m_characters; }
    platform::Rect ink() const noexcept override { return {0, -ascent, width(), descent}; }

    // From the line's left end on its baseline.
    std::uint8_t coverage(std::int32_t x, std::int32_t y) const {
        if (x < 0 || x >= width() || y < -ascent || y >= descent) return 0;
        const auto letter = static_cast<std::int32_t>(cells[static_cast<std::size_t>(x / characterWidth)]);
        return letter == U'#' ? 255 : letter == U' ' ? 0 : static_cast<std::uint8_t>(letter * 37 + x * 51 + y * 25);
    }

    std::u32string text, cells;

  private:
    std::vector<Character> m_characters;
};

class GridFont final : public platform::TextFont {
  public:
    explicit GridFont(bool isScalable = true) : m_metrics{ascent, descent, characterWidth, isScalable} {}
    const platform::FontMetrics& metrics() const noexcept override { return m_metrics; }
    std::unique_ptr<platform::TextLine> layOut(std::u32string_view text, bool) noexcept override {
        EXPECT_TRUE(!text.empty() && text.size() <= longestLine);
        return std::make_unique<GridLine>(text);
    }
    bool draw(std::span<const platform::PlacedLine> lines, const platform::TextTurn& turn, std::int32_t width,
              std::int32_t height, std::uint8_t* coverage) noexcept override {
        EXPECT_TRUE(m_metrics.isScalable || turn.cosine == 1);
        for (std::int32_t y = 0; y < height; ++y)
            for (std::int32_t x = 0; x < width; ++x, ++coverage) {
                const double dx = x + 0.5 - turn.x, dy = y + 0.5 - turn.y;
                const auto u = static_cast<std::int32_t>(std::floor(turn.cosine * dx + turn.sine * dy));
                const auto v = static_cast<std::int32_t>(std::floor(turn.cosine * dy - turn.sine * dx));
                *coverage = 0;
                for (const auto& placed : lines)
                    *coverage = std::max(
                        *coverage, static_cast<const GridLine*>(placed.line)->coverage(u - placed.x, v - placed.y));
            }
        return true;
    }

  private:
    platform::FontMetrics m_metrics;
};

// "text@x,y text@x,y", 'i' standing for an ellipsis and 'e' for an accent.
std::string placesOf(TextLayout& layout) {
    std::string places;
    EXPECT_TRUE(layout.forPieces([](const Rect&) { return true; },
                                 [&](const platform::TextLine& line, std::int64_t x, std::int64_t y) {
                                     if (!places.empty()) places += ' ';
                                     for (const char32_t c : static_cast<const GridLine&>(line).text)
                                         places += c == 0x2026 ? 'i' : c == 0x301 ? 'e' : c < 128 ? char(c) : '?';
                                     places += "@" + std::to_string(x) + "," + std::to_string(y);
                                     return true;
                                 }));
    return places;
}

TEST(TextLayout, PutsACharacterOnAnotherLineOrPlace) {
    const struct {
        std::string text;
        std::int64_t width, height;
        std::int32_t Alignment;
        bool WordWrap;
        std::string places;
        std::int64_t neededWidth, neededHeight;
    } rows[] = {
        {"", 0, 0, 0, false, "", 0, 10},
        {"a\n", 0, 0, 0, false, "a@0,8", 5, 20},
        {"ab\r\ncd\ref\n\r\ngh\xE2\x80\xA9i", 0, 0, 0, true, "ab@0,8 cd@0,18 ef@0,28 gh@0,48 i@0,58", 10, 60},
        {"a\1b\x7F\xC2\x85\0c"s, 0, 0, 0, false, "abc@0,8", 15, 10},
        {"a\xFF\xC3", 0, 0, 0, false, "a??@0,8", 15, 10},
        // tabs
        {"a\tb\t\tc", 0, 0, 0, false, "a@0,8 b@40,8 c@120,8", 125, 10},
        {"a\tb", 100, 0, txtRight | txtRightToLeft, false, "a@95,8 b@55,8", 45, 10},
        {"aaaaaaa\tbb", 42, 0, 0, true, "aaaaaaa@0,8 bb@0,18", 35, 20},
        // alignment, also of what is larger than its rectangle
        {"a\nbbb", 0, 0, txtCenter, false, "a@5,8 bbb@0,18", 15, 20},
        {"ab", 30, 30, txtCenter | txtMiddle, false, "ab@10,18", 10, 10},
        {"ab", 30, 30, txtRight | txtBottom, false, "ab@20,28", 10, 10},
        {"abcdef", 25, 9, txtCenter | txtMiddle, false, "abcdef@-3,7", 30, 10},
        {"abcdef", 20, 5, txtRight | txtBottom, false, "abcdef@-10,3", 30, 10},
        // word wrap
        {"aa bb cc", 25, 0, 0, true, "aa bb@0,8 cc@0,18", 25, 20},
        {"aa  bb   ", 10, 0, 0, true, "aa@0,8 bb@0,18", 10, 20},
        {"aa bb", 0, 0, 0, true, "aa bb@0,8", 25, 10},
        {"a bcdefgh i", 20, 0, 0, true, "a@0,8 bcde@0,18 fgh@0,28 i@0,38", 20, 40},
        {"aa-bb", 20, 0, 0, true, "aa-@0,8 bb@0,18", 15, 20},
        {"abc", 1, 0, 0, true, "a@0,8 b@0,18 c@0,28", 5, 30},
        {"ab\xCC\x81"
         "c",
         10, 0, 0, true, "abe@0,8 c@0,18", 10, 20},
        {"a\xCC\x81"
         "b",
         3, 0, 0, true, "ae@0,8 b@0,18", 5, 20},
        // ellipses
        {"abcdef", 30, 0, txtEllipsis, false, "abcdef@0,8", 30, 10},
        {"abcdefg\nh", 30, 0, txtEllipsis, false, "abcdei@0,8 h@0,18", 30, 20},
        {"abc  def", 30, 0, txtEllipsis, false, "abci@0,8", 20, 10},
        {"ab\xCC\x81"
         "c",
         13, 0, txtEllipsis, false, "ai@0,8", 10, 10},
        {"abc", 3, 0, txtEllipsis, false, "i@0,8", 5, 10},
        {"ab\ncd\nef", 50, 29, txtEllipsis, false, "ab@0,8 cdi@0,18", 15, 20},
        {"ab\ncd", 0, 5, txtEllipsis, false, "abi@0,8", 15, 10},
        {"aa bb cc dd", 25, 20, txtEllipsis, true, "aa bb@0,8 cc dd@0,18", 25, 20},
        {"aa bb cc dd", 25, 10, txtEllipsis, true, "aa bi@0,8", 25, 10},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        GridFont font;
        TextLayout layout(font);
        ASSERT_TRUE(layout.layOut(row.text, {row.width, row.height, row.Alignment, row.WordWrap}));
        EXPECT_EQ(placesOf(layout), row.places);
        EXPECT_EQ(layout.neededWidth(), row.neededWidth);
        EXPECT_EQ(layout.neededHeight(), row.neededHeight);
    }
}

TEST(TextLayout, GivesTheSystemMoreThanItTakesOrLosesSomeOfIt) {
    const std::string words(200'000, 'x'), spaced = [] {
        std::string text;
        for (int i = 0; i < 40'000; ++i)
            text += "abcd ";
        return text;
    }();
    for (const std::string& text : {words, spaced}) {
        for (const bool wraps : {false, true}) {
            GridFont font;
            TextLayout layout(font);
            ASSERT_TRUE(layout.layOut(text, {100, 0, 0, wraps}));
            EXPECT_EQ(layout.neededWidth(), wraps ? (&text == &words || text[4] == 'x' ? 100 : 95) : 1'000'000);
            EXPECT_EQ(layout.neededHeight(), wraps ? 100'000 : 10);
        }
    }
}

// --- drawing

constexpr std::int32_t side = 48;

void paint(cPixSheet& sheet, std::uint8_t b, std::uint8_t g, std::uint8_t r, std::uint8_t a, AlphaTypeEnum alpha,
           std::int32_t width = side) {
    sheet.InitializeDIB(width, side);
    for (std::int32_t i = 0; i < width * side; ++i) {
        const std::uint8_t pixel[] = {b, g, r, a};
        std::copy_n(pixel, 4, sheet.BitsPointer() + i * 4);
    }
    sheet.Alpha(alpha);
}

TextDrawing onto(cPixSheet& host, std::string_view text, std::int32_t x, std::int32_t y,
                 std::int32_t Color = 0xC08040) {
    TextDrawing drawing;
    drawing.destHostDIB = &host;
    drawing.Text = text;
    drawing.destX = x;
    drawing.destY = y;
    drawing.Color = Color;
    return drawing;
}

TEST(TextDrawing, DiffersFromExactBlendingByMoreThanOne) {
    const GridLine line(U"abc#xyz");
    const std::string text = "abc#xyz";
    const struct {
        std::uint8_t b, g, r, a;
        AlphaTypeEnum before, after;
    } backgrounds[] = {{255, 255, 255, 255, AlphaNone, AlphaNone},
                       {0, 0, 0, 255, AlphaNone, AlphaNone},
                       {0xC0, 0x80, 0x40, 255, AlphaSimple, AlphaSimple},
                       {0, 0, 0, 0, AlphaSimple, AlphaComplex},
                       {20, 90, 130, 140, AlphaComplex, AlphaComplex}};
    for (const auto& back : backgrounds) {
        for (const bool bySystem : {false, true}) {
            SCOPED_TRACE("on " + std::to_string(back.r) + " " + std::to_string(back.a) + ", system " +
                         std::to_string(bySystem));
            cPixSheet host;
            paint(host, back.b, back.g, back.r, back.a, back.before);
            host.isAlphaBlendFriendly(bySystem);
            GridFont font;
            ASSERT_TRUE(spt_DrawText(host, font, onto(host, text, 4, 9)));
            EXPECT_EQ(host.Alpha(), back.after);
            int worst = 0;
            bool isUntouched = true;
            for (std::int32_t y = 0; y < side; ++y)
                for (std::int32_t x = 0; x < side; ++x) {
                    const int coverage = line.coverage(x - 4, y - 9 - ascent);
                    const std::uint8_t* const pixel = HostAccess::pixels(host).rowFromTop(std::size_t(y)) + 4 * x;
                    const int ink[] = {0xC0, 0x80, 0x40, 255}, ground[] = {back.b, back.g, back.r, back.a};
                    for (int c = 0; c < 4; ++c) {
                        const double exact = (ink[c] * coverage + ground[c] * (255 - coverage)) / 255.0;
                        worst = std::max(worst, std::abs(pixel[c] - static_cast<int>(std::lround(exact))));
                        isUntouched = isUntouched && pixel[c] == ground[c];
                    }
                }
            EXPECT_LE(worst, 1);
            EXPECT_TRUE(bySystem || isUntouched == (back.before == AlphaSimple && back.a == 255)) << "its own colour";
        }
    }
}

TEST(TextDrawing, DrawsOnADeviceContextOrPastTheEdgesOtherwise) {
    const std::string text = "#abcdefgh#\n##########";
    cPixSheet large, settings;
    paint(large, 9, 9, 9, 255, AlphaNone, 2 * side);
    settings.isAlphaBlendFriendly(false);
    GridFont font;
    ASSERT_TRUE(spt_DrawText(settings, font, onto(large, text, 10, 14)));
    for (const auto& [x, y] : {std::pair{-20, 14}, {10, -5}, {30, 30}, {10 - side, 14}, {10, 14 + (1 << 30)}}) {
        Canvas canvas(side, side, 24);
        std::fill_n(canvas.bits, canvas.size, std::uint8_t{9});
        cPixSheet host;
        paint(host, 9, 9, 9, 255, AlphaNone);
        TextDrawing drawing = onto(host, text, x, y);
        ASSERT_TRUE(spt_DrawText(settings, font, drawing));
        drawing.destHostDIB = nullptr;
        drawing.destinationDC = canvas.dc;
        ASSERT_TRUE(spt_DrawText(settings, font, drawing));
        platform::GdiFlush();
        for (std::int32_t v = 0; v < side; ++v)
            for (std::int32_t u = 0; u < side; ++u) {
                const std::int64_t fromX = std::int64_t{u} - x + 10, fromY = std::int64_t{v} - y + 14;
                const bool isIn = fromX >= 0 && fromX < 2 * side && fromY >= 0 && fromY < side;
                const std::int32_t expected =
                    isIn ? large.GetPixel(std::int32_t(fromX), std::int32_t(fromY)) : 0x090909;
                ASSERT_EQ(host.GetPixel(u, v), expected) << u << ", " << v;
                const std::uint8_t* const pixel = canvas.bits + std::size_t(side - 1 - v) * canvas.stride + 3 * u;
                ASSERT_EQ(pixel[0] << 16 | pixel[1] << 8 | pixel[2], expected) << u << ", " << v;
            }
    }
}

// A font that is not turned is drawn as a picture that Render turns: by quarters that is the same.
TEST(TextDrawing, TurnsPicturesOtherwiseThanOutlines) {
    for (const float angle : {90.0F, -180.0F, 270.0F, 450.0F}) {
        for (const auto& [text, alignment] :
             {std::pair{"ab#\ncd"s, std::int32_t{txtLeft}}, {"abcd"s, std::int32_t{txtCenter | txtMiddle | txtClip}}}) {
            SCOPED_TRACE(text + std::to_string(angle));
            cPixSheet hosts[2];
            for (const bool isScalable : {false, true}) {
                GridFont font(isScalable);
                paint(hosts[isScalable], 0, 0, 0, 0, AlphaSimple);
                TextDrawing drawing = onto(hosts[isScalable], text, 12, 13);
                drawing.Angle = angle;
                drawing.form.Alignment = alignment;
                if (alignment != txtLeft) drawing.form.width = 15;
                ASSERT_TRUE(spt_DrawText(hosts[isScalable], font, drawing));
            }
            EXPECT_EQ(pixelsOf(hosts[0]), pixelsOf(hosts[1]));
            EXPECT_EQ(hosts[0].Alpha(), AlphaComplex);
        }
    }
}

TEST(TextDrawing, ClipsWhatNobodyAskedForOrNot) {
    GridFont font;
    for (const float angle : {0.0F, 30.0F}) {
        for (const bool isClipping : {false, true}) {
            cPixSheet host;
            paint(host, 0, 0, 0, 0, AlphaSimple);
            TextDrawing drawing = onto(host, "##########\n##########", 16, 20);
            drawing.form = {16, 8, txtCenter | txtMiddle | (isClipping ? txtClip : 0), false};
            drawing.Angle = angle;
            ASSERT_TRUE(spt_DrawText(host, font, drawing));
            double ink = 0; // in pixels
            for (std::int32_t i = 0; i < side * side; ++i)
                ink += host.BitsPointer()[4 * i + 3] / 255.0;
            EXPECT_NEAR(ink, isClipping ? 16 * 8 : 1000, isClipping ? 1 : 50) << angle;
        }
    }
}

// --- the system's fonts

constexpr const char* noText = "built without the libraries that draw text"; // as the next test sees

platform::StdFont tahoma(double size) {
    return {.Name = "Tahoma", .Size = size};
}

// The rest of it is in tests/data/transcripts/text.txt.
TEST(SystemText, TakesAFontThatIsGoneOrSaysNotWhyThereIsNone) {
    cPixSheet sheet, empty;
    sheet.InitializeDIB(20, 20);
    std::int32_t w = 1, h = 2;
    const platform::Handle stale = platform::CreateFontIndirectW({.Name = "Tahoma", .height = -12});
    EXPECT_EQ(stale != 0, platform::canDrawText());
    EXPECT_EQ(platform::DeleteObject(stale), stale != 0);
    EXPECT_FALSE(sheet.DrawText_hFont(0, stale, "a", 0, 0) || sheet.MeasureText_hFont(stale, "a", w, h));
    EXPECT_EQ(sheet.LastErrorText(), platform::canDrawText() ? "the handle is no font" : "no text can be drawn here");
    EXPECT_FALSE(empty.DrawText_stdFont(0, tahoma(9), "a", 0, 0) || empty.LastErrorText().empty());
    EXPECT_FALSE(sheet.DrawText_stdFont(4711, tahoma(9), "a", 0, 0) || sheet.LastErrorText().empty());
    EXPECT_FALSE(sheet.MeasureText_stdFont(tahoma(9), "a", w, h, -1));
    EXPECT_EQ(std::pair(w, h), std::pair(1, 2));
}

// Ink fills what was measured, but for the bearings of letters, and stays within what the line said.
TEST(SystemText, DrawsWhatItHasNotMeasured) {
    if (!platform::canDrawText()) GTEST_SKIP() << noText;
    for (const double size : {7.0, 9.0, 18.0, 72.0}) {
        SCOPED_TRACE(size);
        const double pixels = size * 96 / 72;
        cPixSheet sheet;
        std::int32_t w = 0, h = 0;
        ASSERT_TRUE(sheet.MeasureText_stdFont(tahoma(size), "HHamburgH\r\nH", w, h)) << sheet.LastErrorText();
        EXPECT_NEAR(h, 2.4 * pixels, 0.2 * pixels + 2);
        for (const float angle : {0.0F, 90.0F, 360.0F}) {
            sheet.InitializeDIB(2 * w, 2 * w);
            ASSERT_TRUE(sheet.DrawText_stdFont(0, tahoma(size), "HHamburgH\r\nH", w / 2, w - h / 2, 0, 0, 0xFF, 100,
                                               txtLeft, false, angle));
            TrimRectangle ink;
            ASSERT_TRUE(sheet.TrimImage(trimAll, true, &ink));
            const bool isUpright = angle == 90;
            const std::int32_t along = isUpright ? ink.y - (w - w / 2) : ink.x - w / 2;
            EXPECT_NEAR(along, 0, pixels / 6 + 2);
            EXPECT_NEAR(along + (isUpright ? ink.Height : ink.Width), w, pixels / 6 + 2);
            EXPECT_LE(isUpright ? ink.Width : ink.Height, h);
            EXPECT_EQ(sheet.Alpha(), AlphaComplex);
        }
    }
}

} // namespace
} // namespace pixkit::test
// SPDX-License-Identifier: MIT
