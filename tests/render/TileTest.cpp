// Tiles and shadows against their rules, and what is left when memory ends.
#include "render/DrawByTheBook.h"

namespace pixkit::test {
namespace {

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

struct Request {
    std::int32_t x, y, width, height, opacity, offsetX, offsetY, gap;
};

bool tile(const cPixSheet& sheet, std::intptr_t dc, cPixSheet* host, const Request& r) {
    return sheet.TileImage(dc, r.x, r.y, r.width, r.height, r.opacity, r.offsetX, r.offsetY, r.gap, host);
}

// Every pixel of the destination finds its place in the endless plane by itself.
std::vector<Pixel> tiledByTheBook(const cPixSheet& tile, const cPixSheet& host, const Request& r) {
    Picture source{tile.Width(), tile.Height(), pixelsOf(tile)};
    Picture plane{host.Width(), host.Height(), std::vector<Pixel>(pixelsOf(host).size())};
    const auto wrapped = [](std::int64_t value, std::int64_t period) { return ((value % period) + period) % period; };
    for (std::int64_t y = std::max(r.y, 0); y < std::min<std::int64_t>(plane.height, std::int64_t{r.y} + r.height); ++y)
        for (std::int64_t x = std::max(r.x, 0); x < std::min<std::int64_t>(plane.width, std::int64_t{r.x} + r.width);
             ++x) {
            const std::int64_t u = wrapped(x - r.x - r.offsetX, source.width + r.gap);
            const std::int64_t v = wrapped(y - r.y - r.offsetY, source.height + r.gap);
            if (u < source.width && v < source.height) plane.at(x, y) = source.at(u, v);
        }
    Picture result{host.Width(), host.Height(), pixelsOf(host)};
    DrawByTheBook(plane, {.Opacity = r.opacity}).onto(result);
    return result.pixels;
}

TEST(TileImage, PutsSomePixelElsewhereThanThePlaneOfTilesHasIt) {
    Random random(1);
    const auto number = [&](std::int32_t low, std::int32_t high) {
        constexpr std::int32_t wild[] = {lowest, lowest + 1, -1000003, highest - 1, highest};
        return random.below(6) == 0 ? std::max(wild[random.below(5)], low < 0 ? lowest : low)
                                    : random.between(low, high);
    };
    for (int round = 0; round < 500; ++round) {
        cPixSheet sheet, host;
        sheet.isAlphaBlendFriendly(false);
        random.fill(sheet, random.between(1, 50), random.between(1, 40));
        random.fill(host, 40, 30);
        const Request r{number(-30, 45),        number(-30, 35),   number(1, 60),     number(1, 60),
                        random.between(1, 300), number(-100, 100), number(-100, 100), number(0, 9)};
        cPixSheet& target = random.below(4) == 0 ? sheet : host;
        const auto expected = tiledByTheBook(sheet, target, r);
        ASSERT_TRUE(tile(sheet, 0, &target, r));
        ASSERT_EQ(pixelsOf(target), expected) << r.x << " " << r.y << ", round " << round;
    }
}

// Larger than what is laid out at once, with tiles lower and higher than that.
TEST(TileImage, LosesThePlaceBetweenBands) {
    Random random(2);
    for (const std::int32_t height : {1, 3, 700}) {
        cPixSheet sheet, host;
        sheet.isAlphaBlendFriendly(false);
        random.fill(sheet, 5, height);
        random.fill(host, 1000, 900);
        const Request request{0, 0, 1000, 900, 100, 2, 1, 2};
        const auto expected = tiledByTheBook(sheet, host, request);
        ASSERT_TRUE(tile(sheet, 0, &host, request));
        EXPECT_TRUE(pixelsOf(host) == expected) << height;
    }
    cPixSheet sheet, copy; // over itself, also where a device context happens to hold it
    for (cPixSheet* one : {&sheet, &copy})
        one->isAlphaBlendFriendly(false);
    random.fill(sheet, 520, 300);
    sheet.CreateCheckerBoard(7, 0x102030);
    sheet.CopyImageTo(copy);
    const Request request{0, 0, 520, 300, 100, 7, 3, 0};
    const auto expected = tiledByTheBook(sheet, sheet, request);
    ASSERT_TRUE(tile(sheet, 0, &sheet, request));
    EXPECT_TRUE(pixelsOf(sheet) == expected);
    ASSERT_TRUE(tile(copy, copy.LoadDIBinDC(true), nullptr, request));
    for (std::int32_t i = 0; i < 520 * 300; ++i)
        ASSERT_EQ(copy.GetPixel(i % 520, i / 520, nullptr, true), sheet.GetPixel(i % 520, i / 520)) << i;
}

// The average over the box as one would write it down, pixel by pixel.
TEST(CreateDropShadow, AveragesAnotherBoxAtSomeDepthOrSize) {
    Random random(2);
    constexpr std::pair<std::int32_t, std::int32_t> sizes[] = {{1, 1}, {1, 37}, {40, 1}, {5, 4}, {33, 29}, {131, 9}};
    for (const auto& [width, height] : sizes) {
        cPixSheet sheet;
        random.fill(sheet, width, height);
        Picture source{width, height, pixelsOf(sheet)};
        for (int depth = 0; depth <= 10; ++depth) {
            const auto shadow = sheet.CreateDropShadow(depth, 0x7F30C8FF); // the highest byte means nothing
            ASSERT_TRUE(shadow);
            Picture expected{width + 2 * depth, height + 2 * depth, pixelsOf(*shadow)};
            for (std::int64_t y = 0; y < expected.height; ++y) {
                for (std::int64_t x = 0; x < expected.width; ++x) {
                    int tally = 0;
                    for (std::int64_t v = y - 2 * depth; v <= y; ++v)
                        for (std::int64_t u = x - 2 * depth; u <= x; ++u)
                            tally += source.stored(u, height - 1 - v)[3];
                    const int alpha = tally / ((2 * depth + 1) * (2 * depth + 1));
                    const auto premultiplied = [&](int c) { return static_cast<std::uint8_t>(c * alpha / 255); };
                    expected.at(x, y) = {premultiplied(0x30), premultiplied(0xC8), premultiplied(0xFF),
                                         static_cast<std::uint8_t>(alpha)};
                }
            }
            EXPECT_EQ(pixelsOf(*shadow), expected.pixels) << width << " x " << height << " at depth " << depth;
        }
        EXPECT_EQ(pixelsOf(sheet), source.pixels);
    }
}

} // namespace
} // namespace pixkit::test
// SPDX-License-Identifier: MIT
