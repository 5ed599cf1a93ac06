// Fonts and lines of text on both sides of the seam, drawn with the same font file: Wine's Tahoma, which Debian's
// package fonts-wine holds.
#include "platform/text.h"
#include "platform/faults.h"
#include "platform/gdi.h"
#include "support/Pictures.h"
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace pixkit::platform;
using pixkit::cPixSheet;
using pixkit::test::Bytes;
using UniqueFont = UniqueHandle<&DeleteObject>;

namespace {

constexpr bool isWindows = std::filesystem::path::preferred_separator == '\\';
const std::string fontFolder = "/usr/share/wine/fonts/";
constexpr int width = 1800;

FontRecord tahoma(std::int32_t height, bool isBold = false, bool isItalic = false, bool isRuled = false) {
    const std::string file = fontFolder + (isBold ? "tahomabd.ttf" : "tahoma.ttf");
    return {.Name = isWindows ? "Tahoma" : file,
            .height = height,
            .weight = isBold ? 700 : 400,
            .italic = isItalic,
            .underline = isRuled,
            .strikeOut = isRuled};
}

// One line, drawn 8 pixels from the left with room for it above and below. Nothing on failure.
Bytes drawn(const FontRecord& record, std::u32string_view text, int height, int baseline, bool isRightToLeft = false) {
    const UniqueFont handle(CreateFontIndirectW(record));
    const auto font = openFont(handle.get());
    const auto line = font ? font->layOut(text, isRightToLeft) : nullptr;
    if (!line) return {};
    Bytes mask(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0xAA);
    const PlacedLine placed{line.get(), 8, baseline};
    return font->draw({&placed, 1}, {}, width, height, mask.data()) ? mask : Bytes();
}

struct Text : testing::Test {
    void SetUp() override {
        if (canDrawText()) return;
        EXPECT_EQ(CreateFontIndirectW(tahoma(-12)), 0);
        EXPECT_EQ(openFont(0), nullptr);
        GTEST_SKIP() << "built without the libraries that draw text";
    }
};

} // namespace

// tests/data/text/tahoma.png is what the Windows side draws, which PIXKIT_WRITE_LEDGER=yes lets the Windows program
// write.
TEST_F(Text, CoversWhatGdiCoversWithTheSameFont) {
    const std::u32string_view texts[] = {U"Hamburgefonstiv \u00e4\u00f6 AVAT",
                                         U"The quick brown fox jumps over the lazy dog"};
    Bytes all;
    for (const int size : {9, 12, 16, 24, 48, 72})
        for (const int style : {0, 1, 2, 3, 4, 5}) { // plain, another text, bold, italic, both, ruled
            const FontRecord record = tahoma(-size, style == 2 || style == 4, style == 3 || style == 4, style == 5);
            const Bytes mask = drawn(record, texts[style == 1 ? 1 : 0], size * 3 / 2, size * 9 / 8);
            ASSERT_FALSE(mask.empty()) << "is the package fonts-wine there?";
            all.insert(all.end(), mask.begin(), mask.end());
        }
    const int height = static_cast<int>(all.size()) / width;
    const std::string name = (pixkit::test::sourceFolder() / "tests/data/text/tahoma.png").string();
    cPixSheet sheet;
    if (isWindows && std::getenv("PIXKIT_WRITE_LEDGER") != nullptr) {
        pixkit::test::draw(sheet, width, height, pixkit::AlphaNone, [&](std::size_t x, std::size_t y) {
            const std::uint8_t level = all[y * width + x];
            return pixkit::test::Pixel{level, level, level, 255};
        });
        ASSERT_TRUE(sheet.SaveToFile_PNG(name, false));
    }
    ASSERT_TRUE(sheet.LoadPicture_File(name)) << name;
    ASSERT_EQ(sheet.Height(), height);
    int worst = 0;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            worst = std::max(worst, std::abs(sheet.BitsPointer()[((height - 1 - y) * width + x) * 4] -
                                             all[static_cast<std::size_t>(y * width + x)]));
    EXPECT_LE(worst, 1);
}

TEST_F(Text, MeasuresAreThoseOfGdi) {
    struct Row {
        int height, ascent, descent, averageWidth;
    } const rows[] = {{-1, 1, 0, 1}, {-12, 12, 2, 7}, {-13, 13, 3, 8}, {-5000, 5002, 1033, 2993}, {0, 13, 3, 8},
                      {1, 1, 0, 1},  {5, 4, 1, 2},    {12, 10, 2, 6},  {1000, 828, 171, 496}};
    for (const Row& row : rows) {
        const UniqueFont handle(CreateFontIndirectW(tahoma(row.height)));
        const auto font = openFont(handle.get());
        ASSERT_NE(font, nullptr) << row.height;
        EXPECT_EQ(font->metrics().ascent, row.ascent) << row.height;
        EXPECT_EQ(font->metrics().descent, row.descent) << row.height;
        EXPECT_EQ(font->metrics().averageWidth, row.averageWidth) << row.height;
        EXPECT_TRUE(font->metrics().isScalable);
    }
}

TEST_F(Text, NothingIsDrawnBesideTheInk) {
    const std::u32string_view texts[] = {U"fj\u00c4\u0301g",
                                         U"\u05e9\u05dc\u05d5\u05dd abc \u0645\u0631\u062d\u0628\u0627",
                                         U"\U0001F600\u200d\u0301", U"\u0301"};
    for (const std::u32string_view text : texts)
        for (const double angle : {0.0, 0.4, 1.5707963267948966, 3.0, -1.0})
            for (const int size : {7, 20, 300}) {
                const UniqueFont handle(CreateFontIndirectW(tahoma(-size, size == 20, size != 7, true)));
                const auto font = openFont(handle.get());
                ASSERT_NE(font, nullptr);
                const auto line = font->layOut(text, size == 7);
                ASSERT_NE(line, nullptr);
                const auto characters = line->characters();
                EXPECT_EQ(characters.size(), text.size());
                const int sum = std::accumulate(characters.begin(), characters.end(), 0,
                                                [](int all, const auto& one) { return all + one.advance; });
                // There what several characters share may be rounded.
                EXPECT_TRUE(isWindows || sum == line->width()) << sum << ", " << line->width();
                const TextTurn turn{std::cos(angle), std::sin(angle), 300, 200};
                const PlacedLine placed{line.get(), 0, 0};
                Bytes mask(600 * 400, 0xAA);
                ASSERT_TRUE(font->draw({&placed, 1}, turn, 600, 400, mask.data()));
                const Rect ink = line->ink();
                for (std::size_t i = 0; i < mask.size(); ++i) {
                    // The pixel's middle, turned back; a pixel that is touched has it at most so far from the ink.
                    const std::size_t row = i / 600;
                    const double x = static_cast<double>(i % 600) - 299.5, y = static_cast<double>(row) - 199.5;
                    const double back = x * turn.cosine + y * turn.sine, down = y * turn.cosine - x * turn.sine;
                    const bool isInside = back > ink.left - 0.75 && back < ink.right + 0.75 && down > ink.top - 0.75 &&
                                          down < ink.bottom + 0.75;
                    ASSERT_TRUE(isInside || mask[i] == 0) << size << " px, " << angle << ": " << back << ", " << down;
                }
            }
}

TEST_F(Text, StandsAtTheEndThatReadingBeginsAtOtherwise) {
    constexpr int height = 40, baseline = 30, farLeft = 8;
    const std::u32string_view text = U"\u05d0\u05d1___"; // neutral: only rules reach below the baseline
    for (const bool isRightToLeft : {false, true}) {
        const Bytes mask = drawn(tahoma(-24), text, height, baseline, isRightToLeft);
        ASSERT_FALSE(mask.empty());
        int left = width, right = 0, lowLeft = width, lowRight = 0;
        for (int i = 0; i < width * height; ++i) {
            if (mask[static_cast<std::size_t>(i)] < 128) continue;
            const int x = i % width;
            left = std::min(left, x);
            right = std::max(right, x);
            if (i / width <= baseline) continue;
            lowLeft = std::min(lowLeft, x);
            lowRight = std::max(lowRight, x);
        }
        EXPECT_GE(left, farLeft - 2);
        EXPECT_EQ(lowLeft == left, isRightToLeft) << lowLeft << " of " << left << " to " << right;
        EXPECT_EQ(lowRight == right, !isRightToLeft) << lowRight << " of " << left << " to " << right;
    }
}

TEST_F(Text, LinesEndBetweenIdeographsAsBetweenLetters) {
    const UniqueFont handle(CreateFontIndirectW(tahoma(-12)));
    const auto font = openFont(handle.get());
    ASSERT_NE(font, nullptr);
    for (const auto& [text, canBreak] : {std::pair{U"\u4e00\u4e8c", true}, {U"ab", false}, {U"a\u0301", false}}) {
        const auto line = font->layOut(text, false);
        ASSERT_NE(line, nullptr);
        EXPECT_EQ(line->characters()[1].canBreak, canBreak) << static_cast<std::uint32_t>(text[1]);
    }
}

// The last reference of a handle takes the font with it.
TEST_F(Text, TenThousandFontsLeaveHandlesBehindOrAreNoObjects) {
    const std::size_t before = openHandles();
    for (int cycle = 0; cycle < 10'000; ++cycle) {
        UniqueFont handle(CreateFontIndirectW(tahoma(-12 - cycle % 3)));
        const auto font = openFont(handle.get());
        ASSERT_TRUE(font != nullptr && (cycle % 100 != 0 || font->layOut(U"a", false) != nullptr));
        if (cycle != 0) continue;
        EXPECT_EQ(GetObjectType(handle.get()), ObjectType::font);
        const Handle stale = handle.release();
        EXPECT_TRUE(DeleteObject(stale) && !DeleteObject(stale) && openFont(stale) == nullptr);
        EXPECT_NE(font->layOut(U"open still", false), nullptr);
        EXPECT_EQ(font->layOut(U"", false), nullptr);
        EXPECT_EQ(font->layOut(std::u32string(TextFont::longestLine + 1, U'x'), false), nullptr);
        EXPECT_NE(font->layOut(std::u32string(TextFont::longestLine, U'\u0628'), true), nullptr);
    }
    EXPECT_EQ(openHandles(), before);
}

// Windows takes any name for that of a family, and any height for a size.
TEST_F(Text, WhatIsNoFontIsRefused) {
    for (const char* name : {"/dev/zero", "/", "./", "/nowhere/at.ttf", "/proc/self/mem", "/etc/passwd"}) {
        const UniqueFont font(CreateFontIndirectW({.Name = name, .height = -12}));
        EXPECT_EQ(font.get() != 0, isWindows) << name;
    }
    using Limits = std::numeric_limits<std::int32_t>;
    for (const std::int32_t height : {Limits::min(), Limits::max(), -65536, 100000}) {
        const UniqueFont font(CreateFontIndirectW(tahoma(height)));
        EXPECT_EQ(font.get() != 0, isWindows) << height;
    }
    EXPECT_EQ(drawn(tahoma(-65535), U"Hg", 40, 20).empty(), isWindows);

    // Broken ones may be refused, or draw something. On Windows the file's name is that of no family, for which
    // another one stands in.
    const pixkit::test::TemporaryFolder folder;
    const std::string file = folder.name(u8"font.ttf");
    const Bytes good = pixkit::test::readFile(fontFolder + "tahoma.ttf");
    std::mt19937 random(11);
    int opened = 0;
    for (int i = 0; i < 60; ++i) {
        Bytes bytes = good;
        if (i % 3 == 0) bytes.resize(random() % bytes.size());
        for (auto k = random() % 100; k > 0 && !bytes.empty(); --k)
            bytes[random() % (i % 2 == 0 ? bytes.size() : std::min<std::size_t>(bytes.size(), 1200))] =
                static_cast<std::uint8_t>(random());
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        const FontRecord record{.Name = file, .height = -20, .weight = i % 4 == 0 ? 700 : 400, .underline = true};
        opened += drawn(record, U"Hamburgefonstiv", 40, 30).empty() ? 0 : 1;
    }
    EXPECT_GT(opened, 10);
}

TEST_F(Text, ThreadsShareAFont) {
    const UniqueFont shared(CreateFontIndirectW(tahoma(-24)));
    const auto draw = [&](Bytes& mask) {
        for (int i = 0; i < 20; ++i) {
            const auto font = openFont(shared.get());
            const auto line = font->layOut(U"Threads \u05d0", false);
            const PlacedLine placed{line.get(), 8, 30};
            mask.assign(static_cast<std::size_t>(width) * 40, 0);
            font->draw({&placed, 1}, {}, width, 40, mask.data());
        }
    };
    Bytes masks[3];
    std::vector<std::thread> threads;
    for (Bytes& mask : masks)
        threads.emplace_back(draw, std::ref(mask));
    for (std::thread& thread : threads)
        thread.join();
    const Bytes alone = drawn(tahoma(-24), U"Threads \u05d0", 40, 30);
    for (const Bytes& mask : masks)
        EXPECT_TRUE(mask == alone);
}
// SPDX-License-Identifier: MIT
