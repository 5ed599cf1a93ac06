#include "render/Rotator.h"
#include "support/Pictures.h"
#include "surface/HostAccess.h"
#include <cmath>
#include <limits>

namespace pixkit {
namespace {

using test::fill;
using test::Pixel;
using test::pixelsOf;

// Opaque pixels numbered from 1, top row first.
void number(cPixSheet& sheet, std::int32_t width, std::int32_t height) {
    std::vector<Pixel> pixels;
    for (std::int32_t i = 1; i <= width * height; ++i)
        pixels.push_back({static_cast<std::uint8_t>(i), 0, 0, 255});
    fill(sheet, width, height, pixels);
}

struct Drawing {
    float angle;
    std::int32_t x = 0, y = 0, destWidth = 0, destHeight = 0;     // 0: the source's
    std::int32_t SrcX = 0, SrcY = 0, srcWidth = 0, srcHeight = 0; // 0: the image's
    std::int32_t opacity = 100;
};

bool rotate(const cPixSheet& image, cPixSheet& host, Drawing d, bool highQuality) {
    if (d.srcWidth == 0) d.srcWidth = image.Width();
    if (d.srcHeight == 0) d.srcHeight = image.Height();
    const std::int64_t width = d.destWidth == 0 ? d.srcWidth : d.destWidth;
    const std::int64_t height = d.destHeight == 0 ? d.srcHeight : d.destHeight;
    DrawJob job = {.image = HostAccess::pixels(image),
                   .source = Rect::ofSize(d.srcWidth, d.srcHeight).moved(d.SrcX, d.SrcY),
                   .destHostDIB = &host,
                   .destination = Rect::ofSize(std::abs(width), std::abs(height)).moved(d.x, d.y),
                   .mirrorsColumns = width < 0,
                   .mirrorsRows = height < 0,
                   .HighQuality = highQuality,
                   .Angle = d.angle,
                   .globalAlpha = globalAlphaOf(d.opacity)};
    return spt_RotateImage(job);
}

std::string numbersOf(const cPixSheet& sheet) {
    std::string rows;
    const auto pixels = pixelsOf(sheet);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        if (i > 0 && i % static_cast<std::size_t>(sheet.Width()) == 0) rows += '/';
        rows += pixels[i][3] == 0 ? '.' : static_cast<char>('0' + pixels[i][0]);
    }
    return rows;
}

TEST(Rotation, QuarterTurnsMoveOrLosePixels) {
    struct Row {
        const char* what;
        std::int32_t imageWidth, imageHeight;
        Drawing drawing;
        const char* result; // on a host of 5 x 4
    };
    const Row rows[] = {
        {"none", 3, 2, {0, 1, 1}, "...../.123./.456./....."},
        {"a full turn", 3, 2, {-720, 1, 1}, "...../.123./.456./....."},
        {"a half", 3, 2, {180, 1, 1}, "...../.654./.321./....."},
        {"a half back", 3, 2, {-180, 1, 1}, "...../.654./.321./....."},
        {"a quarter clockwise, square", 2, 2, {90, 1, 1}, "...../.31../.42../....."},
        {"three quarters", 2, 2, {270, 1, 1}, "...../.24../.13../....."},
        {"a quarter back", 2, 2, {-90, 1, 1}, "...../.24../.13../....."},
        {"a quarter between pixels", 3, 2, {90, 1, 1}, ".41../.52../.63../....."},
        {"three quarters between pixels", 3, 2, {-450, 1, 1}, ".36../.25../.14../....."},
        {"odd and odd stay centred", 3, 1, {90, 1, 1}, "..1../..2../..3../....."},
        {"mirrored, then turned", 2, 2, {90, 1, 1, -2, 2}, "...../.42../.31../....."},
        {"upside down, then turned", 2, 2, {90, 1, 1, 2, -2}, "...../.13../.24../....."},
        {"cut on all sides", 3, 2, {90, -1, -1}, "3..../...../...../....."},
        {"a part", 3, 2, {180, 1, 1, 0, 0, 1, 0, 2, 1}, "...../.32../...../....."},
    };
    for (const Row& row : rows) {
        for (const bool highQuality : {false, true}) {
            cPixSheet image;
            number(image, row.imageWidth, row.imageHeight);
            cPixSheet host;
            host.InitializeDIB(5, 4);
            ASSERT_TRUE(rotate(image, host, row.drawing, highQuality));
            EXPECT_EQ(numbersOf(host), row.result) << row.what << (highQuality ? ", interpolated" : "");
        }
    }
}

TEST(Rotation, IsNotWhatRenderDrawsAtAnAngle) {
    cPixSheet image;
    number(image, 3, 2);
    cPixSheet host;
    host.InitializeDIB(5, 4);
    // Centred on 2, 2: the rectangle starts at 1, 1. A negative source height turns it upside down first.
    ASSERT_TRUE(image.Render(0, 2, 2, 0, 0, 0, 0, 0, -2, 100, true, true, &host, gsclNone, 0, 90, true));
    EXPECT_EQ(numbersOf(host), ".14../.25../.36../.....");
    cPixSheet screen; // as a device context
    screen.InitializeDIB(5, 4);
    ASSERT_TRUE(
        image.Render(screen.LoadDIBinDC(true), 1, 1, 0, 0, 0, 0, 0, 0, 100, true, true, nullptr, gsclNone, 0, 180));
    screen.LoadDIBinDC(false);
    const auto pixels = pixelsOf(screen);
    EXPECT_EQ(pixels[6][0], 6);
    EXPECT_EQ(pixels[13][0], 1);
}

// A white disc's worth of picture keeps its weight wherever it is turned: nothing is lost at edges, nor drawn twice.
TEST(Rotation, LosesOrAddsWeightOrMovesTheCentre) {
    cPixSheet image;
    fill(image, 20, 10, std::vector<Pixel>(200, {255, 255, 255, 255}));
    for (const float angle : {0.25F, 30.0F, 45.0F, 89.75F, 133.3F, 200.0F, 314.15F}) {
        for (const bool highQuality : {false, true}) {
            cPixSheet host;
            host.InitializeDIB(60, 60);
            ASSERT_TRUE(rotate(image, host, {angle, 20, 25}, highQuality));
            double weight = 0;
            double x = 0;
            double y = 0;
            const auto pixels = pixelsOf(host);
            for (std::size_t i = 0; i < pixels.size(); ++i) {
                ASSERT_EQ(pixels[i][0], pixels[i][3]) << "not premultiplied any more";
                weight += pixels[i][3] / 255.0;
                x += pixels[i][3] / 255.0 * (static_cast<double>(i % 60) + 0.5);
                const std::size_t row = i / 60;
                y += pixels[i][3] / 255.0 * (static_cast<double>(row) + 0.5);
            }
            EXPECT_NEAR(weight, 200, highQuality ? 4 : 20) << angle; // whole pixels count unevenly
            EXPECT_NEAR(x / weight, 30, 0.1) << angle;
            EXPECT_NEAR(y / weight, 30, 0.1) << angle;
        }
    }
}

// Against the definition, worked out with the system's sine and cosine a pixel at a time.
TEST(Rotation, SamplesElsewhereThanThePixelCentresMapTo) {
    cPixSheet image;
    std::vector<Pixel> pixels;
    for (int y = 0; y < 24; ++y)
        for (int x = 0; x < 32; ++x)
            pixels.push_back({static_cast<std::uint8_t>(8 * x), static_cast<std::uint8_t>(10 * y), 0, 255});
    fill(image, 32, 24, pixels);
    for (const float angle : {17.0F, -100.5F, 222.0F, 359.0F}) {
        cPixSheet host;
        host.InitializeDIB(100, 100);
        ASSERT_TRUE(rotate(image, host, {angle, 20, 30, -48, 36}, true));
        const double radians = static_cast<double>(angle) * 3.14159265358979323846 / 180;
        const auto drawn = pixelsOf(host);
        int inside = 0;
        for (int y = 0; y < 100; ++y) {
            for (int x = 0; x < 100; ++x) {
                const double dx = x + 0.5 - 44;
                const double dy = y + 0.5 - 48;
                const double u = 16 - (dx * std::cos(radians) + dy * std::sin(radians)) * 32 / 48 - 0.5;
                const double v = 12 + (dy * std::cos(radians) - dx * std::sin(radians)) * 24 / 36 - 0.5;
                if (u < 0.01 || v < 0.01 || u > 30.99 || v > 22.99) continue;
                ++inside;
                const Pixel& pixel = drawn[static_cast<std::size_t>(y * 100 + x)];
                // Rounding down, and steps of 1/256 of differences of 8 and 10.
                ASSERT_NEAR(pixel[0], 8 * u - 0.5, 0.6) << angle << ": " << x << ", " << y;
                ASSERT_NEAR(pixel[1], 10 * v - 0.5, 0.6) << angle << ": " << x << ", " << y;
                ASSERT_EQ(pixel[3], 255);
            }
        }
        EXPECT_GT(inside, 1000);
    }
}

TEST(Rotation, AcceptsNonsenseOrReachesOutside) {
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    constexpr std::int32_t least = std::numeric_limits<std::int32_t>::min();
    cPixSheet image;
    number(image, 3, 2);
    cPixSheet host;
    host.InitializeDIB(5, 4);
    const std::int32_t edges[] = {least, least + 1, -1000, -3, 0, 3, most - 1, most};
    const float angles[] = {1e-40F, 45, 90, 1e30F, -179.99F};
    for (const std::int32_t position : edges)
        for (const std::int32_t width : edges)
            for (const std::int32_t height : edges)
                for (const float angle : angles)
                    for (const bool highQuality : {false, true})
                        EXPECT_TRUE(rotate(image, host, {angle, position, -2, width, height}, highQuality));

    // Within a picture larger than any memory, the pixels around its centre are those of one source pixel.
    cPixSheet huge;
    huge.InitializeDIB(5, 4);
    EXPECT_TRUE(rotate(image, huge, {33, -most / 2, -most / 2, most, most}, false));
    for (const Pixel& pixel : pixelsOf(huge))
        EXPECT_TRUE(pixel[0] == 2 || pixel[0] == 5);
}

TEST(Rotation, ReadsWhatItHasDrawnWhenAnImageIsTurnedOntoItself) {
    for (const bool highQuality : {false, true}) {
        cPixSheet image;
        number(image, 3, 3);
        cPixSheet copy;
        image.CopyImageTo(copy);
        ASSERT_TRUE(rotate(copy, copy, {90}, highQuality));
        EXPECT_EQ(numbersOf(copy), "741/852/963");
    }
}

// One number for many drawings, the same on every processor, compiler and system; the resampler's as well.
TEST(Rotation, DiffersBetweenBuildsOrProcessors) {
    cPixSheet image;
    std::vector<Pixel> pixels;
    std::uint32_t state = 1;
    const auto below = [&state](std::uint32_t limit) {
        state = state * 1664525 + 1013904223;
        return (state >> 8) % limit;
    };
    for (int i = 0; i < 61 * 47; ++i) {
        const std::uint32_t alpha = below(256);
        Pixel pixel{};
        for (std::size_t channel = 0; channel < 3; ++channel)
            pixel[channel] = static_cast<std::uint8_t>(below(alpha + 1));
        pixel[3] = static_cast<std::uint8_t>(alpha);
        pixels.push_back(pixel);
    }
    fill(image, 61, 47, pixels);
    cPixSheet host;
    host.InitializeDIB(150, 130);
    std::uint64_t hash = 0xCBF29CE484222325U;
    const auto addHost = [&hash](const cPixSheet& sheet) {
        for (const Pixel& pixel : pixelsOf(sheet))
            for (const std::uint8_t byte : pixel)
                hash = (hash ^ byte) * 0x100000001B3U;
    };
    for (int i = 0; i < 300; ++i) {
        const auto size = [&] {
            const auto absolute = static_cast<std::int32_t>(1 + below(120));
            return below(4) == 0 ? -absolute : absolute;
        };
        const Drawing drawing = {static_cast<float>(below(720000)) / 1000 - 360,
                                 static_cast<std::int32_t>(below(160)) - 30,
                                 static_cast<std::int32_t>(below(140)) - 30,
                                 size(),
                                 size(),
                                 static_cast<std::int32_t>(below(10)),
                                 static_cast<std::int32_t>(below(10)),
                                 1 + static_cast<std::int32_t>(below(51)),
                                 1 + static_cast<std::int32_t>(below(37)),
                                 1 + static_cast<std::int32_t>(below(100))};
        ASSERT_TRUE(rotate(image, host, drawing, i % 2 == 0));
        addHost(host);
        cPixSheet resized;
        image.CopyImageTo(resized);
        resized.HighQualityInterpolation(i % 3 != 0);
        const std::int32_t newWidth = size();
        ASSERT_TRUE(resized.Resize(newWidth, size()));
        addHost(resized);
    }
    EXPECT_EQ(hash, 9936236080096843838U);
}

} // namespace
} // namespace pixkit
