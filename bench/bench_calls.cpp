// What a single small call costs, in nanoseconds: drawing 16 x 16 pixels beside the kernel that draws them, an object's
// making and end, a pixel's reading.
#include "kernels/kernels.h"
#include "program.h"
#include "surface/cPixSheet.h"
#include <cstring>

namespace {

using pixkit::cPixSheet;

template <class Call>
void add(const std::string& name, Call call) {
    bench::add(name, [call](benchmark::State& state) {
        for (auto _ : state)
            call();
        state.counters["ns"] = benchmark::Counter(static_cast<double>(state.iterations()) * 1e-9,
                                                  benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    });
}

constexpr std::int32_t size = 16, at = 40;

// Translucent pixels, for which the kernel has no short way.
void fill(cPixSheet& sheet, std::int32_t width, std::int32_t height) {
    sheet.InitializeDIB(width, height);
    std::memset(sheet.BitsPointer(), 127,
                static_cast<std::size_t>(sheet.scanWidth()) * static_cast<std::size_t>(height));
    sheet.isAlphaBlendFriendly(false);
}

} // namespace

int main(int argc, char** argv) {
    static cPixSheet source, host;
    fill(source, size, size);
    fill(host, 1920, 1080);
    for (const std::int32_t opacity : {100, 50}) {
        const std::string name = "calls/Render 16 x 16 at " + std::to_string(opacity) + " %/";
        add(name + "pixkit", [=] {
            source.Render(0, at, at, 0, 0, 0, 0, 0, 0, opacity, true, true, &host);
            benchmark::ClobberMemory();
        });
        add(name + "kernel", [=] {
            const auto& kernel = pixkit::kernels::table();
            for (std::int32_t y = 0; y < size; ++y) {
                std::uint8_t* const to = host.BitsPointer() + std::ptrdiff_t{at + y} * host.scanWidth() + 4 * at;
                const std::uint8_t* const from = source.BitsPointer() + std::ptrdiff_t{y} * source.scanWidth();
                if (opacity == 100)
                    kernel.blendOver(to, from, size);
                else
                    kernel.blendScaled(to, from, size, 127);
            }
            benchmark::ClobberMemory();
        });
    }
    add("calls/an object, made and ended/pixkit", [] {
        cPixSheet sheet;
        benchmark::DoNotOptimize(&sheet);
    });
    add("calls/GetPixel/pixkit", [] {
        static std::int32_t x = 0;
        benchmark::DoNotOptimize(host.GetPixel(x, 7));
        x = (x + 1) % 1024;
    });
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
