// Every row kernel at every level on a picture of 1920 x 1080, row by row, against memcpy.
#include "against_memcpy.h"
#include "kernels/kernels.h"
#include "render/PixelWorkers.h"
#include <iterator>

namespace {

using pixkit::kernels::CpuLevel;
using pixkit::kernels::Table;

using bench::height;
using bench::pixelBytes;
using bench::width;

// What a kernel may use: `pixels` is the picture it works on, `other` a second one with up to 8 bytes a pixel.
struct Pictures {
    std::vector<std::uint8_t> pixels;
    std::vector<std::uint8_t> other = std::vector<std::uint8_t>(2 * pixelBytes, 77);
    pixkit::kernels::Tone lighter = pixkit::spt_LightnessTone(25);

    explicit Pictures(bool drawingLike) : pixels(bench::premultipliedPixels(drawingLike)) {
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
    bool drawingLike = true;
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

void premultiply(const Table& table, Pictures& p, std::size_t y) {
    table.premultiply(p.row(y), width);
}

void unpremultiply(const Table& table, Pictures& p, std::size_t y) {
    table.unpremultiply(p.row(y), p.row(y), width);
}

void straighten(const Table& table, Pictures& p, std::size_t y) {
    table.straighten(p.row(y), p.row(y), width);
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
    {"premultiply", premultiply},
    {"premultiplySoft", premultiply, false},
    {"unpremultiply", unpremultiply},
    {"unpremultiplySoft", unpremultiply, false},
    {"straighten", straighten},
    {"straightenSoft", straighten, false},
    {"invert", [](const Table& t, Pictures& p, std::size_t y) { t.invert(p.row(y), width); }},
    {"grayscale",
     [](const Table& t, Pictures& p, std::size_t y) {
         t.grayscale(p.row(y), width, {0.299F, 0.587F, 0.114F});
     }},
    {"adjustLightness",
     [](const Table& t, Pictures& p, std::size_t y) { t.adjustLightness(p.otherRow(y), p.row(y), width, p.lighter); }},
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
    {"alphaBits",
     [](const Table& t, Pictures& p, std::size_t y) { t.alphaBits(p.otherRow(y, 1), p.row(y), width, 1); }},
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

void measure(benchmark::State& state, const Kernel& kernel, const Table& table) {
    Pictures pictures(kernel.drawingLike);
    bench::measureAgainstMemcpy(state, pictures.pixels.data(), [&] {
        for (std::size_t y = 0; y < height; ++y)
            kernel.run(table, pictures, y);
    });
}

} // namespace

int main(int argc, char** argv) {
    for (const Kernel& kernel : kernels) {
        const std::string subject = std::string("kernels/") + kernel.name + "/";
        bool best = true; // the best level stands for the component, the others beside it
        for (std::size_t i = std::size(pixkit::kernels::cpuLevels); i-- > 0;) {
            const CpuLevel& level = pixkit::kernels::cpuLevels[i];
            if (!level.isHere()) continue;
            bench::addTimed(subject + (best ? "pixkit-" : "") + level.name,
                            [&kernel, table = pixkit::kernels::tableFor(level.features)](benchmark::State& state) {
                                measure(state, kernel, table);
                            });
            best = false;
        }
    }
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
