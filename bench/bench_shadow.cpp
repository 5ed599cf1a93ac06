// CreateDropShadow at two depths beside a plain loop with the same running sums, as one would write it and a compiler
// would take it at -O3. Both make their result in a fresh image.
#include "against_memcpy.h"
#include "surface/cPixSheet.h"
#include <memory>
#include <utility>

namespace {

using pixkit::cPixSheet;

std::unique_ptr<cPixSheet> plainShadow(const cPixSheet& sheet, std::int32_t depth, std::int32_t color) {
    const std::int32_t window = 2 * depth + 1;
    const std::int32_t area = window * window;
    auto shadow = std::make_unique<cPixSheet>();
    if (!shadow->InitializeDIB(sheet.Width() + 2 * depth, sheet.Height() + 2 * depth)) return nullptr;
    std::vector<std::int32_t> column(static_cast<std::size_t>(shadow->Width() + window));
    const auto alpha = [&](std::int32_t x, std::int32_t y) {
        return std::int32_t{sheet.BitsPointer()[(y * sheet.Width() + x) * 4 + 3]};
    };
    for (std::int32_t y = 0; y < shadow->Height(); ++y) {
        std::int32_t* const sums = column.data() + window;
        if (y < sheet.Height()) {
            for (std::int32_t x = 0; x < sheet.Width(); ++x)
                sums[x] += alpha(x, y);
        }
        if (y >= window) {
            for (std::int32_t x = 0; x < sheet.Width(); ++x)
                sums[x] -= alpha(x, y - window);
        }
        std::uint8_t* pixel = shadow->BitsPointer() + std::ptrdiff_t{y} * shadow->Width() * 4;
        std::int32_t tally = 0;
        for (std::int32_t x = 0; x < shadow->Width(); ++x, pixel += 4) {
            tally += sums[x] - sums[x - window];
            const std::int32_t average = tally / area;
            pixel[0] = static_cast<std::uint8_t>((color >> 16 & 255) * average / 255);
            pixel[1] = static_cast<std::uint8_t>((color >> 8 & 255) * average / 255);
            pixel[2] = static_cast<std::uint8_t>((color & 255) * average / 255);
            pixel[3] = static_cast<std::uint8_t>(average);
        }
    }
    return shadow;
}

void measure(benchmark::State& state, std::int32_t width, std::int32_t height, std::int32_t depth, bool plain) {
    cPixSheet sheet;
    if (!sheet.InitializeDIB(width, height)) {
        state.SkipWithError("no memory");
        return;
    }
    const std::vector<std::uint8_t> pixels = bench::premultipliedPixels(true);
    const std::size_t bytes = static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4;
    for (std::size_t done = 0; done < bytes; done += pixels.size())
        std::memcpy(sheet.BitsPointer() + done, pixels.data(), std::min(pixels.size(), bytes - done));
    const auto own = sheet.CreateDropShadow(depth, 0x204060);
    const auto peer = plainShadow(sheet, depth, 0x204060);
    const auto size = static_cast<std::size_t>(own->scanWidth()) * static_cast<std::size_t>(own->Height());
    if (std::memcmp(own->BitsPointer(), peer->BitsPointer(), size) != 0) {
        state.SkipWithError("the two shadows differ");
        return;
    }
    std::vector<double> seconds;
    for (auto _ : state) {
        seconds.push_back(bench::secondsOf([&] {
            const auto shadow = plain ? plainShadow(sheet, depth, 0x204060) : sheet.CreateDropShadow(depth, 0x204060);
            benchmark::DoNotOptimize(shadow->BitsPointer());
        }));
        state.SetIterationTime(seconds.back());
    }
    state.counters["Mpixel/s"] = static_cast<double>(width) * height / 1e6 / bench::median(seconds);
}

} // namespace

int main(int argc, char** argv) {
    for (const auto& [width, height] : {std::pair{256, 256}, {1920, 1080}, {4096, 4096}}) {
        for (const std::int32_t depth : {4, 10}) {
            for (const bool plain : {false, true}) {
                bench::addTimed("shadow/" + std::to_string(width) + " x " + std::to_string(height) + " depth " +
                                    std::to_string(depth) + (plain ? "/plain loop" : "/pixkit"),
                                [=](benchmark::State& state) { measure(state, width, height, depth, plain); });
            }
        }
    }
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
