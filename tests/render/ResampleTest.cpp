#include "render/Resampler.h"
#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace pixkit {
namespace {

using Levels = std::vector<int>;

// A picture whose pixels hold one level in all four bytes, given top row first.
PixelBuffer grey(std::size_t width, const Levels& levels) {
    PixelBuffer buffer(width, levels.size() / width);
    for (std::size_t i = 0; i < levels.size(); ++i)
        std::fill_n(buffer.view().rowFromTop(i / width) + i % width * 4, 4, static_cast<std::uint8_t>(levels[i]));
    return buffer;
}

Levels levelsOf(const PixelBuffer& buffer) {
    Levels levels;
    for (std::size_t y = 0; y < buffer.height(); ++y)
        for (std::size_t x = 0; x < buffer.width(); ++x)
            levels.push_back(buffer.view().rowFromTop(y)[x * 4 + x % 4]);
    return levels;
}

struct Rectangle {
    std::int32_t x, y, width, height;
    bool operator==(const Rectangle&) const = default;
};

TEST(Resample, TakesOtherPixelsOrCutsElsewhereThanTheRulesSay) {
    const Levels six = {10, 20, 30, 40, 50, 60}; // as 3 x 2
    const Levels column = {0, 100, 200};         // as 1 x 3
    struct Row {
        const char* what;
        std::size_t imageWidth;
        Levels image;
        Rectangle source, destination;
        bool highQuality;
        Rectangle filled;
        Levels result;
    };
    const Row rows[] = {
        {"twice as wide", 3, six, {0, 0, 3, 1}, {0, 0, 6, 1}, false, {0, 0, 6, 1}, {10, 10, 20, 20, 30, 30}},
        {"a third, first of each", 3, six, {0, 0, 0, 0}, {5, 5, 1, 1}, false, {5, 5, 1, 1}, {40}},
        {"3 to 2 columns", 3, six, {0, 1, 3, 1}, {0, 0, 2, 1}, false, {0, 0, 2, 1}, {40, 50}},
        {"a part from the top", 3, six, {1, 0, 2, 1}, {0, 0, 2, 2}, false, {0, 0, 2, 2}, {20, 30, 20, 30}},
        {"cut at the origin", 3, six, {0, 0, 3, 2}, {-4, -1, 6, 3}, false, {0, 0, 2, 2}, {60, 60, 60, 60}},
        {"columns mix with the next one, the last stays alone",
         3,
         six,
         {0, 1, 3, 1},
         {0, 0, 6, 1},
         true,
         {0, 0, 6, 1},
         {40, 45, 50, 55, 60, 60}},
        {"columns cut on the left", 3, six, {0, 1, 3, 1}, {-1, 0, 6, 1}, true, {0, 0, 5, 1}, {45, 50, 55, 60, 60}},
        {"a part's last column does not mix with what follows",
         3,
         six,
         {0, 1, 2, 1},
         {0, 0, 4, 1},
         true,
         {0, 0, 4, 1},
         {40, 45, 50, 50}},
        // Stored rows from the bottom: 200, 100, 0. Positions 0, .5, 1, 1.5, 2, 2.5; those below 1 use row 0 alone,
        // the others row iY by the fraction and row iY - 1 by the rest.
        {"rows mix with the one below",
         1,
         column,
         {0, 0, 1, 3},
         {0, 0, 1, 6},
         true,
         {0, 0, 1, 6},
         {50, 100, 150, 200, 200, 200}},
        {"rows cut at the top", 1, column, {0, 0, 1, 3}, {3, -2, 1, 6}, true, {3, 0, 1, 4}, {150, 200, 200, 200}},
        {"a part's lowest row mixes with the one below it",
         1,
         column,
         {0, 0, 1, 2},
         {0, 0, 1, 4},
         true,
         {0, 0, 1, 4},
         {50, 100, 150, 200}},
        {"one to one sits a row higher",
         3,
         six,
         {0, 0, 3, 2},
         {0, 0, 3, 2},
         true,
         {0, 0, 3, 2},
         {40, 50, 60, 40, 50, 60}},
    };
    for (const Row& row : rows) {
        const PixelBuffer image = grey(row.imageWidth, row.image);
        PixelBuffer sized;
        auto [x, y, width, height] = row.destination;
        ASSERT_TRUE(spt_pvResize(sized, image.view(), row.source.x, row.source.y, row.source.width, row.source.height,
                                 x, y, width, height, row.highQuality))
            << row.what;
        EXPECT_EQ((Rectangle{x, y, width, height}), row.filled) << row.what;
        EXPECT_EQ(levelsOf(sized), row.result) << row.what;
    }
}

TEST(Resample, AcceptsWhatIsNotInTheSourceOrNotVisible) {
    const PixelBuffer image = grey(3, {1, 2, 3, 4, 5, 6});
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    const std::pair<Rectangle, Rectangle> rows[] = {
        {{-1, 0, 2, 2}, {0, 0, 2, 2}},        {{0, 0, 4, 2}, {0, 0, 2, 2}},         {{3, 0, 0, 0}, {0, 0, 2, 2}},
        {{0, most, 1, most}, {0, 0, 2, 2}},   {{0, 0, 3, -1}, {0, 0, 2, 2}},        {{0, 0, 3, 2}, {0, 0, 0, 2}},
        {{0, 0, 3, 2}, {0, 0, 2, least}},     {{0, 0, 3, 2}, {-2, 0, 2, 2}},        {{0, 0, 3, 2}, {0, least, 2, most}},
        {{least, least, 1, 1}, {0, 0, 1, 1}}, {{0, 0, least, least}, {0, 0, 1, 1}},
    };
    for (const auto& [source, destination] : rows) {
        for (const bool highQuality : {false, true}) {
            PixelBuffer sized;
            auto [x, y, width, height] = destination;
            EXPECT_FALSE(spt_pvResize(sized, image.view(), source.x, source.y, source.width, source.height, x, y, width,
                                      height, highQuality));
            EXPECT_EQ((Rectangle{x, y, width, height}), destination);
            EXPECT_FALSE(sized);
        }
    }
    PixelBuffer sized;
    Rectangle all = {0, 0, most, most};
    EXPECT_THROW(spt_pvResize(sized, image.view(), 0, 0, 0, 0, all.x, all.y, all.width, all.height, true),
                 std::bad_alloc);
}

// A window onto a picture larger than any memory has the bytes that the whole would have there.
TEST(Resample, ChangesBytesWithThePartThatIsVisible) {
    Levels levels;
    for (int i = 0; i < 63; ++i)
        levels.push_back(i * 37 % 256);
    const PixelBuffer image = grey(9, levels);
    for (const bool highQuality : {false, true}) {
        PixelBuffer whole;
        Rectangle all = {-3, -2, 41, 29};
        ASSERT_TRUE(spt_pvResize(whole, image.view(), 1, 1, 7, 5, all.x, all.y, all.width, all.height, highQuality));
        PixelBuffer part;
        Rectangle cut = {-3, -2, 41, 29};
        ASSERT_TRUE(spt_pvResize(part, image.view(), 1, 1, 7, 5, cut.x, cut.y, cut.width, cut.height, highQuality,
                                 {5, 4, 30, 20}));
        ASSERT_EQ(cut, (Rectangle{5, 4, 25, 16}));
        for (std::size_t y = 0; y < 16; ++y)
            EXPECT_EQ(0, std::memcmp(part.view().rowFromTop(y), whole.view().rowFromTop(y + 4) + 5 * 4, 25 * 4));

        constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
        Rectangle huge = {-most, -most, most, most};
        ASSERT_TRUE(spt_pvResize(part, image.view(), 0, 0, 0, 0, huge.x, huge.y, huge.width, huge.height, highQuality,
                                 {-2, -2, 100, 100}));
        EXPECT_EQ(huge, (Rectangle{-2, -2, 2, 2}));
        // The lower right corner; with interpolation the bottom row alone counts near the bottom.
        EXPECT_EQ(levelsOf(part), Levels(4, levels.back()));
    }
}

} // namespace
} // namespace pixkit
