// Two million pixels drawn by the blender, of which one checksum holds for every processor, compiler and system.
#include "render/Blender.h"
#include "render/Canvas.h"
#include "support/Ledger.h"
#include "support/PixelRows.h"
#include "surface/HostAccess.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

void fillValid(cPixSheet& sheet, std::int32_t width, std::int32_t height, Numbers& numbers) {
    sheet.InitializeDIB(width, height);
    const auto bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
    std::ranges::copy(rowOf(Content::premultiplied, bytes, numbers), sheet.BitsPointer());
}

} // namespace

// At random places and sizes, partly outside, in every way, onto every kind of destination.
TEST(BlenderGolden, OverTwoMillionPixelsDiffersBetweenBuildsOrProcessors) {
    constexpr std::int32_t width = 290, height = 80;
    Numbers numbers(42);
    cPixSheet source, host;
    fillValid(source, 300, 70, numbers);
    fillValid(host, width, height, numbers);
    const Canvas canvases[] = {{width, height, 24}, {width, height, 32}};
    std::vector<std::uint8_t> all;
    const auto between = [&](std::int32_t low, std::int32_t high) {
        return low + static_cast<std::int32_t>(numbers.below(static_cast<std::uint32_t>(high - low + 1)));
    };
    for (std::int64_t composites = 0; composites < 2'000'000;) {
        const std::int32_t columns = between(1, 300), rows = between(1, 70);
        const std::int32_t left = between(0, 300 - columns), top = between(0, 70 - rows);
        const std::int32_t x = between(-20, width - 1), y = between(-20, height - 1);
        DrawJob job{.image = HostAccess::pixels(std::as_const(source)),
                    .source = Rect::ofSize(columns, rows).moved(left, top),
                    .destination = Rect::ofSize(columns, rows).moved(x, y)};
        job.globalAlpha = numbers.below(3) == 0 ? std::uint8_t{255} : static_cast<std::uint8_t>(between(2, 254));
        job.grayScale = numbers.below(2) == 0 ? gsclNone : between(0, 7);
        job.LightAdjustment = numbers.below(2) == 0 ? 0.0F : static_cast<float>(between(-400, 400)) / 4.0F;
        const std::uint32_t kind = numbers.below(3);
        if (kind == 0)
            job.destHostDIB = &host;
        else
            job.destinationDC = canvases[kind - 1].dc;
        ASSERT_TRUE(job.findLimits() && spt_Win9xBlend(job));
        const Rect drawn = job.visible();
        if (!drawn.isEmpty()) composites += drawn.width() * drawn.height();
        platform::GdiFlush();
        const std::uint8_t* const bits = kind == 0 ? host.BitsPointer() : canvases[kind - 1].bits;
        all.insert(all.end(), bits, bits + (kind == 0 ? std::size_t{width * height * 4} : canvases[kind - 1].size));
    }
    EXPECT_EQ(checksum(all), "c2958b293a4aa524");
}
// SPDX-License-Identifier: MIT
