// The software blender on both kinds of destination.
#include "render/Blender.h"
#include "PixelRows.h"
#include "platform/gdi.h"
#include "render/Canvas.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

using namespace pixkit;
using platform::Handle;
using test::Canvas;
using test::Numbers;

namespace {

using Pixel = std::array<std::uint8_t, 4>;

void fill(cPixSheet& sheet, std::int32_t width, std::int32_t height, Numbers& numbers) {
    sheet.InitializeDIB(width, height);
    const auto bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
    const std::vector<std::uint8_t> row = rowOf(test::Content::premultiplied, bytes, numbers);
    std::memcpy(sheet.BitsPointer(), row.data(), bytes);
}

bool draw(Handle dc, const cPixSheet& source, std::int32_t SrcX, std::int32_t SrcY, std::int32_t destX,
          std::int32_t destY, std::int32_t width, std::int32_t height, std::int32_t GlobalAlpha = 255,
          cPixSheet* host = nullptr, std::int32_t gray = gsclNone, float light = 0) {
    DrawJob job = {.image = HostAccess::pixels(source),
                   .source = Rect::ofSize(width, height).moved(SrcX, SrcY),
                   .destinationDC = dc,
                   .destHostDIB = host,
                   .destination = Rect::ofSize(width, height).moved(destX, destY),
                   .globalAlpha = static_cast<std::uint8_t>(GlobalAlpha),
                   .grayScale = gray,
                   .LightAdjustment = light};
    return job.findLimits() && spt_Win9xBlend(job);
}

Pixel pixelOf(const cPixSheet& sheet, std::size_t index = 0) {
    Pixel pixel;
    std::memcpy(pixel.data(), sheet.BitsPointer() + 4 * index, 4);
    return pixel;
}

TEST(Blender, DivergesFromTheWorkedResults) {
    const struct {
        Pixel source, under;
        std::int32_t globalAlpha, gray;
        float light;
        Pixel expected;
    } rows[] = {
        {{64, 64, 64, 128}, {255, 255, 255, 255}, 255, gsclNone, 0, {191, 191, 191, 255}},
        {{64, 64, 64, 128}, {255, 255, 255, 255}, 127, gsclNone, 0, {223, 223, 223, 255}}, // 48960 + 8128, / 255
        {{64, 64, 64, 128}, {0, 0, 0, 0}, 127, gsclNone, 0, {31, 31, 31, 63}},
        {{9, 8, 7, 0}, {10, 20, 30, 40}, 255, gsclNone, 0, {10, 20, 30, 40}}, // colour in a clear pixel
        {{9, 8, 7, 0}, {10, 20, 30, 40}, 100, gsclNone, 50, {10, 20, 30, 40}},
        {{1, 2, 3, 255}, {0, 0, 0, 0}, 255, gsclNone, 0, {1, 2, 3, 255}},
        {{0, 0, 255, 255}, {10, 20, 30, 255}, 255, gsclNTSCPAL, 0, {76, 76, 76, 255}},
        {{0, 0, 128, 128}, {100, 0, 200, 255}, 255, gsclNTSCPAL, 0, {87, 38, 137, 255}}, // gray 38 after D * 127 / 255
        {{0, 0, 128, 128}, {100, 0, 200, 50}, 127, gsclNTSCPAL, 0, {94, 18, 169, 101}},
        {{100, 100, 100, 200}, {0, 0, 0, 0}, 255, gsclNone, 25, {150, 150, 150, 200}}, // + 200 * 63.75 / 255
        {{0, 0, 255, 255}, {0, 0, 0, 0}, 255, gsclNTSCPAL, -50, {38, 38, 38, 255}},    // darkened, then gray
    };
    for (const auto& row : rows) {
        cPixSheet source;
        cPixSheet host;
        source.InitializeDIB(1, 1);
        host.InitializeDIB(1, 1);
        std::memcpy(source.BitsPointer(), row.source.data(), 4);
        std::memcpy(host.BitsPointer(), row.under.data(), 4);
        EXPECT_TRUE(draw(0, source, 0, 0, 0, 0, 1, 1, row.globalAlpha, &host, row.gray, row.light));
        EXPECT_EQ(pixelOf(host), row.expected) << "source alpha " << int{row.source[3]} << " at " << row.globalAlpha;
        EXPECT_EQ(pixelOf(source), row.source) << "the source is never changed";
        for (const std::uint16_t bitCount : {std::uint16_t{24}, std::uint16_t{32}}) {
            Canvas canvas(1, 1, bitCount);
            std::memcpy(canvas.bits, row.under.data(), bitCount / 8);
            EXPECT_TRUE(draw(canvas.dc, source, 0, 0, 0, 0, 1, 1, row.globalAlpha, nullptr, row.gray, row.light));
            EXPECT_EQ(std::memcmp(canvas.bits, row.expected.data(), 3), 0) << bitCount << " bits";
            if (bitCount == 32) {
                EXPECT_EQ(canvas.bits[3], 0) << "a device context keeps no alpha";
            }
        }
    }
}

// Draws at random places and sizes, partly outside, in every way, onto every kind of destination. The one checksum
// holds for every processor, compiler and system.
TEST(Blender, GoldenOverTwoMillionPixelsDiffersBetweenBuildsOrProcessors) {
    Numbers numbers(42);
    cPixSheet source;
    cPixSheet host;
    fill(source, 300, 70, numbers);
    fill(host, 290, 80, numbers);
    Canvas canvas24(290, 80, 24);
    Canvas canvas32(290, 80, 32);
    std::uint64_t hash = 0xCBF29CE484222325U;
    const auto add = [&](const std::uint8_t* bytes, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            hash = (hash ^ bytes[i]) * 0x100000001B3U;
    };
    const auto between = [&](std::int32_t low, std::int32_t high) {
        return low + static_cast<std::int32_t>(numbers.below(static_cast<std::uint32_t>(high - low + 1)));
    };
    std::size_t composites = 0;
    while (composites < 2'000'000) {
        const std::int32_t width = between(1, 300);
        const std::int32_t height = between(1, 70);
        const std::int32_t left = between(0, 300 - width);
        const std::int32_t top = between(0, 70 - height);
        const std::int32_t x = between(-20, 289);
        const std::int32_t y = between(-20, 79);
        const std::int32_t globalAlpha = numbers.below(3) == 0 ? 255 : between(2, 254);
        const std::int32_t gray = numbers.below(2) == 0 ? gsclNone : between(0, 7);
        const float light = numbers.below(2) == 0 ? 0.0F : static_cast<float>(between(-400, 400)) / 4.0F;
        const std::uint32_t kind = numbers.below(3);
        const Handle dc = kind == 0 ? 0 : kind == 1 ? canvas24.dc : canvas32.dc;
        ASSERT_TRUE(
            draw(dc, source, left, top, x, y, width, height, globalAlpha, dc == 0 ? &host : nullptr, gray, light));
        const std::int32_t columns = std::min(x + width, 290) - std::max(x, 0);
        const std::int32_t rows = std::min(y + height, 80) - std::max(y, 0);
        if (columns > 0 && rows > 0) composites += static_cast<std::size_t>(columns * rows);
        platform::GdiFlush();
        if (kind == 0)
            add(host.BitsPointer(), 290 * 80 * 4);
        else
            add((kind == 1 ? canvas24 : canvas32).bits, (kind == 1 ? canvas24 : canvas32).size);
    }
    EXPECT_EQ(hash, 0xC2958B293A4AA524U);
}

// The system rounds where the blender truncates: one step for each of the up to two roundings.
TEST(Blender, TheSystemsAlphaBlendDiffersByMoreThanRounding) {
    Numbers numbers(7);
    cPixSheet source;
    cPixSheet own;
    cPixSheet systems;
    fill(source, 64, 64, numbers);
    int farthest = 0;
    std::size_t differing = 0;
    std::size_t channels = 0;
    for (int round = 0; round < 60; ++round) {
        fill(own, 64, 64, numbers);
        own.CopyImageTo(systems);
        const auto globalAlpha = static_cast<std::uint8_t>(round % 2 == 0 ? 255 : 2 + numbers.below(253));
        ASSERT_TRUE(draw(0, source, 0, 0, 0, 0, 64, 64, globalAlpha, &own));
        ASSERT_TRUE(platform::AlphaBlend(systems.LoadDIBinDC(true), 0, 0, 64, 64, source.LoadDIBinDC(true), 0, 0, 64,
                                         64, {.SourceConstantAlpha = globalAlpha, .AlphaFormat = 1}));
        platform::GdiFlush();
        for (std::size_t i = 0; i < 64 * 64 * 4; ++i, ++channels) {
            const int difference = std::abs(own.BitsPointer()[i] - systems.BitsPointer()[i]);
            farthest = std::max(farthest, difference);
            if (difference != 0) ++differing;
        }
    }
    EXPECT_LE(farthest, 2);
    const double share = 100.0 * static_cast<double>(differing) / static_cast<double>(channels);
    std::printf("AlphaBlend differs in %.1f %% of the channels, by at most %d\n", share, farthest);
}

} // namespace
