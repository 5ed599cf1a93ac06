// CreateRegion on shapes of 24 megapixels, and of 400,000 rectangles, beside a plain loop over the pixels that lists
// the runs of each row.
#include "against_memcpy.h"
#include "platform/regions.h"
#include "surface/cPixSheet.h"

namespace {

using pixkit::cPixSheet;
using pixkit::platform::Rect;

struct Shape {
    const char* name;
    std::int32_t width, height;
    bool (*holds)(std::int32_t x, std::int32_t y);
};

const Shape shapes[] = {
    {"ellipse 24 MP", 6000, 4000,
     [](std::int32_t x, std::int32_t y) {
         const double u = x / 3000.0 - 1, v = y / 2000.0 - 1;
         return u * u + v * v <= 1;
     }},
    {"squares of 7, 24 MP", 6000, 4000, [](std::int32_t x, std::int32_t y) { return (x / 7 + y / 7) % 2 == 0; }},
    {"400,000 rectangles", 1000, 800, [](std::int32_t x, std::int32_t y) { return (x + y) % 2 == 0; }},
};

std::vector<Rect> plainRuns(const cPixSheet& sheet) {
    std::vector<Rect> runs;
    for (std::int32_t y = 0; y < sheet.Height(); ++y) {
        const std::uint8_t* const row =
            sheet.BitsPointer() + std::ptrdiff_t{sheet.Height() - 1 - y} * sheet.scanWidth();
        for (std::int32_t x = 0; x < sheet.Width();) {
            const std::int32_t begin = x;
            while (x < sheet.Width() && row[4 * x + 3] != 0)
                ++x;
            if (x > begin) runs.push_back({begin, y, x, y + 1});
            while (x < sheet.Width() && row[4 * x + 3] == 0)
                ++x;
        }
    }
    return runs;
}

// `style`: of CreateRegion, or -1 for the plain loop.
void measure(benchmark::State& state, const Shape& shape, std::int32_t style) {
    cPixSheet sheet;
    if (!sheet.InitializeDIB(shape.width, shape.height)) {
        state.SkipWithError("no memory");
        return;
    }
    for (std::int32_t y = 0; y < shape.height; ++y)
        for (std::int32_t x = 0; x < shape.width; ++x)
            if (shape.holds(x, y)) sheet.SetPixel(x, y, 0);
    std::size_t rectangles = 0;
    for (auto _ : state) {
        state.SetIterationTime(bench::secondsOf([&] {
            if (style < 0) {
                rectangles = plainRuns(sheet).size();
            } else {
                const pixkit::platform::UniqueRegion region(sheet.CreateRegion(style));
                rectangles = pixkit::platform::GetRegionData(region.get());
            }
        }));
    }
    state.counters["rectangles"] = static_cast<double>(rectangles);
}

} // namespace

int main(int argc, char** argv) {
    for (const Shape& shape : shapes) {
        for (const auto& [name, style] : {std::pair{"pixkit", pixkit::regionShaped + 0},
                                          {"enclosed", pixkit::regionEnclosed + 0},
                                          {"plain loop", -1}}) {
            bench::addTimed(std::string("region/") + shape.name + "/" + name,
                            [&shape, style = style](benchmark::State& state) { measure(state, shape, style); });
        }
    }
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
