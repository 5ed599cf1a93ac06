#include "platform/faults.h"
#include "render/DrawJob.h"
#include "support/Pictures.h"
#include "surface/HostAccess.h"
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace pixkit {
namespace {

using test::pixelsOf;

constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();

void fillRandomly(cPixSheet& sheet, std::int32_t width, std::int32_t height, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<test::Pixel> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (test::Pixel& pixel : pixels) {
        const auto bits = static_cast<std::uint32_t>(random());
        pixel[3] = static_cast<std::uint8_t>(bits % 3 == 0 ? 255 : bits % 3 == 1 ? 0 : bits >> 24);
        for (std::size_t channel = 0; channel < 3; ++channel)
            pixel[channel] = static_cast<std::uint8_t>(random() % (pixel[3] + 1U));
    }
    test::fill(sheet, width, height, pixels);
}

struct Request {
    std::int32_t x, y, width, height, opacity, offsetX, offsetY, gap;
};

// Every pixel of the destination finds its place in the endless plane by itself, and is drawn alone.
void tileByTheBook(const cPixSheet& tile, cPixSheet& host, const Request& request) {
    const auto wrapped = [](std::int64_t value, std::int64_t period) { return ((value % period) + period) % period; };
    const std::int32_t percent = request.opacity % 100 == 0 ? 100 : request.opacity % 100;
    for (std::int32_t y = 0; y < host.Height(); ++y) {
        for (std::int32_t x = 0; x < host.Width(); ++x) {
            if (x < request.x || x - std::int64_t{request.x} >= request.width || y < request.y ||
                y - std::int64_t{request.y} >= request.height)
                continue;
            const std::int64_t u =
                wrapped(std::int64_t{x} - request.x - request.offsetX, std::int64_t{tile.Width()} + request.gap);
            const std::int64_t v =
                wrapped(std::int64_t{y} - request.y - request.offsetY, std::int64_t{tile.Height()} + request.gap);
            if (u >= tile.Width() || v >= tile.Height()) continue;
            DrawJob job = {.image = HostAccess::pixels(tile),
                           .source = Rect::ofSize(1, 1).moved(u, v),
                           .destHostDIB = &host,
                           .destination = Rect::ofSize(1, 1).moved(x, y),
                           .globalAlpha = static_cast<std::uint8_t>(percent * 255 / 100)};
            ASSERT_TRUE(spt_DrawInSoftware(job));
        }
    }
}

bool tile(const cPixSheet& sheet, std::intptr_t dc, cPixSheet* host, const Request& r) {
    return sheet.TileImage(dc, r.x, r.y, r.width, r.height, r.opacity, r.offsetX, r.offsetY, r.gap, host);
}

TEST(TileImage, PutsSomePixelElsewhereThanThePlaneOfTilesHasIt) {
    const Request requests[] = {
        {0, 0, 40, 30, 100, 0, 0, 0},
        {3, 5, 30, 20, 150, 2, -4, 0},
        {-7, -9, 30, 60, 200, -1000003, 999, 3},
        {1, 1, 38, 1, 33, 0, 0, 50},
        {-5, 2, 100, 100, 1, 5, 7, 1},
        {lowest, lowest, highest, highest, 100, 0, 0, 0},
        {0, 0, highest, highest, highest, lowest, lowest, highest},
        {lowest, lowest, highest, highest, 100, highest, lowest, 2},
        {-2, -3, highest, highest, 60, highest, 1, 2},
        {39, 29, 1, 1, 100, 0, 0, 0},
    };
    constexpr std::pair<std::int32_t, std::int32_t> sizes[] = {{1, 1}, {2, 7}, {16, 3}, {50, 41}};
    for (const auto& [width, height] : sizes) {
        cPixSheet sheet;
        fillRandomly(sheet, width, height, 1);
        for (const Request& request : requests) {
            cPixSheet host, expected;
            fillRandomly(host, 40, 30, 2);
            fillRandomly(expected, 40, 30, 2);
            host.Alpha(AlphaNone);
            tileByTheBook(sheet, expected, request);
            EXPECT_TRUE(tile(sheet, 0, &host, request));
            EXPECT_EQ(pixelsOf(host), pixelsOf(expected))
                << width << " x " << height << " over " << request.x << ", " << request.y;
            EXPECT_EQ(host.Alpha(), AlphaNone);
        }
    }
}

// More than one band, with tiles lower and higher than a band.
TEST(TileImage, LosesThePlaceBetweenBands) {
    for (const std::int32_t height : {1, 3, 700}) {
        cPixSheet sheet, host, expected;
        fillRandomly(sheet, 5, height, 3);
        host.InitializeDIB(1000, 900);
        expected.InitializeDIB(1000, 900);
        const Request request{0, 0, 1000, 900, 100, 2, 1, 2};
        ASSERT_TRUE(tile(sheet, 0, &host, request));
        tileByTheBook(sheet, expected, request);
        EXPECT_TRUE(pixelsOf(host) == pixelsOf(expected)) << height;
    }
}

TEST(TileImage, DrawsOntoADeviceContextAsOntoAHost) {
    cPixSheet sheet, host, behind;
    fillRandomly(sheet, 6, 4, 4);
    for (cPixSheet* const destination : {&host, &behind}) {
        fillRandomly(*destination, 25, 17, 5);
        destination->CreateCheckerBoard(3);
    }
    const Request request{-3, 2, 100, 12, 70, 1, 1, 1};
    ASSERT_TRUE(tile(sheet, behind.LoadDIBinDC(true), nullptr, request));
    behind.LoadDIBinDC(false);
    ASSERT_TRUE(tile(sheet, 0, &host, request));
    for (std::int32_t y = 0; y < 17; ++y)
        for (std::int32_t x = 0; x < 25; ++x)
            EXPECT_EQ(behind.GetPixel(x, y, nullptr, true), host.GetPixel(x, y, nullptr, true)) << x << ", " << y;
}

TEST(TileImage, ReadsWhatItHasDrawnOverItself) {
    cPixSheet sheet, copy, expected;
    fillRandomly(sheet, 30, 20, 6);
    fillRandomly(copy, 30, 20, 6);
    fillRandomly(expected, 30, 20, 6);
    const Request request{0, 0, 30, 20, 100, 7, 3, 0};
    tileByTheBook(copy, expected, request);
    EXPECT_TRUE(tile(sheet, 0, &sheet, request));
    EXPECT_EQ(pixelsOf(sheet), pixelsOf(expected));

    // More than one band, and through a device context that happens to hold the image.
    constexpr std::int32_t width = 520;
    constexpr std::int32_t height = 300;
    fillRandomly(sheet, width, height, 8);
    fillRandomly(copy, width, height, 8);
    const Request large{0, 0, width, height, 100, 7, 3, 0};
    EXPECT_TRUE(tile(sheet, sheet.LoadDIBinDC(true), nullptr, large));
    EXPECT_TRUE(tile(copy, 0, &copy, large));
    std::int32_t differing = 0;
    for (std::int32_t i = 0; i < width * height; ++i)
        differing +=
            sheet.GetPixel(i % width, i / width, nullptr, true) != copy.GetPixel(i % width, i / width, nullptr, true);
    EXPECT_EQ(differing, 0);
}

TEST(TileImage, AnswersTrueOrFalseWhereTheOtherIsMeant) {
    cPixSheet sheet, host, empty;
    const Request whole{0, 0, 9, 9, 100, 0, 0, 0};
    host.InitializeDIB(9, 9);
    EXPECT_FALSE(tile(sheet, 0, &host, whole));
    EXPECT_FALSE(tile(sheet, 0, &host, {0, 0, 9, 9, 0, 0, 0, 0})) << "invisible, but there is no image";
    fillRandomly(sheet, 2, 2, 7);
    EXPECT_FALSE(tile(sheet, 0, nullptr, whole));
    EXPECT_FALSE(tile(sheet, 4711, nullptr, whole));
    EXPECT_FALSE(tile(sheet, 0, &empty, whole));
    EXPECT_FALSE(tile(sheet, 0, &host, {0, 0, 0, 9, 100, 0, 0, 0}));
    EXPECT_FALSE(tile(sheet, 0, &host, {0, 0, 9, lowest, 100, 0, 0, 0}));
    EXPECT_FALSE(tile(sheet, 0, &host, {0, 0, 9, 9, 100, 0, 0, -1}));
    EXPECT_TRUE(tile(sheet, 0, nullptr, {0, 0, 9, 9, 0, 0, 0, 0})) << "invisible";
    EXPECT_TRUE(tile(sheet, 0, &host, {9, 0, 9, 9, 100, 0, 0, 0})) << "beside the host";
    EXPECT_TRUE(tile(sheet, 0, &host, {lowest, 0, 9, 9, 100, 0, 0, 0}));
    for (const test::Pixel& pixel : pixelsOf(host))
        EXPECT_EQ(pixel, (test::Pixel{}));
    const std::intptr_t dc = host.LoadDIBinDC(true);
    const platform::ScopedFault fault(platform::SeamCall::createDIBSection);
    EXPECT_FALSE(tile(sheet, dc, nullptr, whole)) << "no memory for the copy of the device context";
}

} // namespace
} // namespace pixkit
