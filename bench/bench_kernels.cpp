// Every row kernel at every level on a picture of 1920 x 1080, row by row, against memcpy of its 8.3 MB.
// Each round times the kernel and memcpy in turn; the counter `of_memcpy` is the ratio of their medians.
#include "kernels/kernels.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>
#include <vector>

namespace {

using pixkit::kernels::CpuLevel;
using pixkit::kernels::Table;

constexpr std::size_t width = 1920;
constexpr std::size_t height = 1080;
constexpr std::size_t pixelBytes = 4 * width * height;

// Drawing-like premultiplied pixels: runs of clear and opaque ones with soft edges between them.
std::vector<std::uint8_t> drawnPixels() {
    std::vector<std::uint8_t> pixels(pixelBytes);
    std::uint32_t state = 1;
    const auto below = [&](std::uint32_t limit) {
        state = state * 1664525 + 1013904223;
        return (state >> 8) % limit;
    };
    for (std::size_t i = 0; i < pixelBytes;) {
        const std::uint32_t kind = below(5);
        const std::uint32_t run = kind < 4 ? 20 + below(100) : 1 + below(10);
        for (std::uint32_t k = 0; k < run && i < pixelBytes; ++k, i += 4) {
            const std::uint32_t alpha = kind == 0 ? 0 : kind < 4 ? 255 : 1 + below(254);
            for (std::size_t channel = 0; channel < 3; ++channel)
                pixels[i + channel] = static_cast<std::uint8_t>(below(alpha + 1));
            pixels[i + 3] = static_cast<std::uint8_t>(alpha);
        }
    }
    return pixels;
}

// What a kernel may use: `pixels` is the picture it works on, `other` a second one with up to 8 bytes a pixel.
struct Pictures {
    std::vector<std::uint8_t> pixels = drawnPixels();
    std::vector<std::uint8_t> other = std::vector<std::uint8_t>(2 * pixelBytes, 77);
    std::vector<std::uint8_t> copy = std::vector<std::uint8_t>(pixelBytes);
    std::vector<std::int16_t> adjust = std::vector<std::int16_t>(256, 20);

    Pictures() {
        for (std::size_t i = 0; i < other.size(); ++i)
            other[i] = static_cast<std::uint8_t>(i * 2654435761U >> 13);
    }
    std::uint8_t* row(std::size_t y) { return pixels.data() + 4 * width * y; }
    std::uint8_t* otherRow(std::size_t y, std::size_t bytesPerPixel = 4) {
        return other.data() + bytesPerPixel * width * y;
    }
};

struct Kernel {
    const char* name;
    void (*run)(const Table& table, Pictures& pictures, std::size_t y);
};

template <auto entry, std::size_t srcBytes>
void convert(const Table& table, Pictures& p, std::size_t y) {
    (table.*entry)(p.row(y), p.otherRow(y, srcBytes), width);
}

template <std::size_t step>
void paeth(const Table& table, Pictures& p, std::size_t y) {
    table.unfilterPaeth(p.otherRow(y, step), p.otherRow(y == 0 ? 1 : y - 1, step), step * width, step);
}

template <std::size_t step>
void avg(const Table& table, Pictures& p, std::size_t y) {
    table.unfilterAvg(p.otherRow(y, step), p.otherRow(y == 0 ? 1 : y - 1, step), step * width, step);
}

template <std::size_t step>
void sub(const Table& table, Pictures& p, std::size_t y) {
    table.unfilterSub(p.otherRow(y, step), step * width, step);
}

constexpr std::uint8_t someColour[4] = {10, 200, 90, 255};

const Kernel kernels[] = {
    {"scanAlpha",
     [](const Table& t, Pictures& p, std::size_t y) {
         pixkit::kernels::AlphaScan scan;
         t.scanAlpha(p.row(y), width, scan);
         benchmark::DoNotOptimize(scan);
     }},
    {"setOpaque", [](const Table& t, Pictures& p, std::size_t y) { t.setOpaque(p.otherRow(y), width); }},
    {"premultiply", [](const Table& t, Pictures& p, std::size_t y) { t.premultiply(p.row(y), width); }},
    {"unpremultiply", [](const Table& t, Pictures& p, std::size_t y) { t.unpremultiply(p.row(y), p.row(y), width); }},
    {"invert", [](const Table& t, Pictures& p, std::size_t y) { t.invert(p.row(y), width); }},
    {"grayscale",
     [](const Table& t, Pictures& p, std::size_t y) {
         t.grayscale(p.row(y), width, {0.299F, 0.587F, 0.114F});
     }},
    {"adjustLightness",
     [](const Table& t, Pictures& p, std::size_t y) {
         t.adjustLightness(p.otherRow(y), p.row(y), width, p.adjust.data(), true);
     }},
    {"blendToColour",
     [](const Table& t, Pictures& p, std::size_t y) { t.blendToColour(p.row(y), width, someColour, 33); }},
    {"replacePixel",
     [](const Table& t, Pictures& p, std::size_t y) { t.replacePixel(p.row(y), width, someColour, someColour); }},
    {"flatten24",
     [](const Table& t, Pictures& p, std::size_t y) { t.flatten24(p.otherRow(y, 3), p.row(y), width, someColour); }},
    {"flatten32",
     [](const Table& t, Pictures& p, std::size_t y) { t.flatten32(p.otherRow(y), p.row(y), width, someColour); }},
    {"mirror", [](const Table& t, Pictures& p, std::size_t y) { t.mirror(p.otherRow(y), p.row(y), width); }},
    {"swapRedBlue", convert<&Table::swapRedBlue, 4>},
    {"pack24", [](const Table& t, Pictures& p, std::size_t y) { t.pack24(p.otherRow(y, 3), p.row(y), width, true); }},
    {"unpack24",
     [](const Table& t, Pictures& p, std::size_t y) { t.unpack24(p.row(y), p.otherRow(y, 3), width, false); }},
    {"extractAlpha",
     [](const Table& t, Pictures& p, std::size_t y) { t.extractAlpha(p.otherRow(y, 1), p.row(y), width); }},
    {"unfilterSub1", sub<1>},
    {"unfilterSub3", sub<3>},
    {"unfilterSub4", sub<4>},
    {"unfilterUp4", [](const Table& t, Pictures& p,
                       std::size_t y) { t.unfilterUp(p.otherRow(y), p.otherRow(y == 0 ? 1 : y - 1), 4 * width); }},
    {"unfilterAvg1", avg<1>},
    {"unfilterAvg3", avg<3>},
    {"unfilterAvg4", avg<4>},
    {"unfilterPaeth1", paeth<1>},
    {"unfilterPaeth2", paeth<2>},
    {"unfilterPaeth3", paeth<3>},
    {"unfilterPaeth4", paeth<4>},
    {"unfilterPaeth6", paeth<6>},
    {"unfilterPaeth8", paeth<8>},
    {"fromRgb8", convert<&Table::fromRgb8, 3>},
    {"fromRgba8", convert<&Table::fromRgba8, 4>},
    {"fromGrayAlpha8", convert<&Table::fromGrayAlpha8, 2>},
    {"fromIndex8", [](const Table& t, Pictures& p,
                      std::size_t y) { t.fromIndex8(p.row(y), p.otherRow(y, 1), width, p.other.data() + pixelBytes); }},
    {"fromGray16", convert<&Table::fromGray16, 2>},
    {"fromRgb16", convert<&Table::fromRgb16, 6>},
    {"fromRgba16", convert<&Table::fromRgba16, 8>},
    {"fromGrayAlpha16", convert<&Table::fromGrayAlpha16, 4>},
    {"unpackSamples1",
     [](const Table& t, Pictures& p, std::size_t y) { t.unpackSamples(p.row(y), p.otherRow(y, 1), width, 1); }},
    {"unpackSamples4",
     [](const Table& t, Pictures& p, std::size_t y) { t.unpackSamples(p.row(y), p.otherRow(y, 1), width, 4); }},
};

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

template <class Work>
double secondsOf(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    benchmark::ClobberMemory();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void setRate(benchmark::State& state) {
    state.counters["Mpixel/s"] =
        benchmark::Counter(static_cast<double>(width * height) * static_cast<double>(state.iterations()) / 1e6,
                           benchmark::Counter::kIsRate);
}

void copyPicture(Pictures& pictures) {
    std::memcpy(pictures.copy.data(), pictures.pixels.data(), pixelBytes);
}

void measure(benchmark::State& state, const Kernel& kernel, const Table& table) {
    Pictures pictures;
    std::vector<double> own;
    std::vector<double> copying;
    for (auto _ : state) {
        copying.push_back(secondsOf([&] { copyPicture(pictures); }));
        own.push_back(secondsOf([&] {
            for (std::size_t y = 0; y < height; ++y)
                kernel.run(table, pictures, y);
        }));
        state.SetIterationTime(own.back());
    }
    state.counters["of_memcpy"] = median(copying) / median(own);
    setRate(state);
}

void measureCopy(benchmark::State& state) {
    Pictures pictures;
    for (auto _ : state)
        state.SetIterationTime(secondsOf([&] { copyPicture(pictures); }));
    setRate(state);
}

} // namespace

int main(int argc, char** argv) {
    constexpr CpuLevel levels[] = {CpuLevel::avx2, CpuLevel::sse2, CpuLevel::scalar};
    constexpr const char* names[] = {"avx2", "sse2", "scalar"};
    for (const Kernel& kernel : kernels) {
        const std::string subject = std::string("kernels/") + kernel.name + "/";
        bool best = true; // the best level stands for the component, the others beside it
        for (std::size_t i = 0; i < std::size(levels); ++i) {
            const Table* const table = pixkit::kernels::tableFor(levels[i]);
            if (table == nullptr) continue;
            benchmark::RegisterBenchmark((subject + (best ? "pixkit-" : "") + names[i]).c_str(),
                                         [&kernel, table](benchmark::State& state) { measure(state, kernel, *table); })
                ->UseManualTime()
                ->Unit(benchmark::kMillisecond);
            best = false;
        }
        benchmark::RegisterBenchmark((subject + "memcpy").c_str(), measureCopy)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
