// Whether cost grows with the pixels alone: the processor time that a pixel takes to load, draw, turn, resize, mirror
// and save, in nanoseconds, for pictures of so many megapixels. At 200 the largest needs 3 GB.
//
//   growth [MEGAPIXELS...]     4 16 64 200 unless said otherwise
#include "surface/cPixSheet.h"
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

namespace {

using pixkit::ByteArray;
using pixkit::cPixSheet;

// Opaque slow gradients with some noise, so that no writer has it too easy.
void fill(cPixSheet& sheet, std::int32_t width, std::int32_t height) {
    if (!sheet.InitializeDIB(width, height)) std::abort();
    std::uint32_t state = 1;
    std::uint8_t* p = sheet.BitsPointer();
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x, p += 4) {
            state = state * 1664525 + 1013904223;
            p[0] = static_cast<std::uint8_t>(x / 16 + (state >> 30));
            p[1] = static_cast<std::uint8_t>(y / 16 + (state >> 28 & 3));
            p[2] = static_cast<std::uint8_t>((x + y) / 32);
            p[3] = 255;
        }
    }
    sheet.isAlphaBlendFriendly(false);
}

struct Column {
    double megapixels;
    std::vector<double> nanoseconds; // below 0: not done
};

// The middle of three, of which `prepare` is not counted.
template <class Prepare, class Work>
void time(Column& column, Prepare prepare, Work work) {
    double times[3];
    bool isDone = true;
    for (double& each : times) {
        prepare();
        const std::clock_t start = std::clock();
        isDone = work() && isDone;
        each = static_cast<double>(std::clock() - start) * (1e9 / CLOCKS_PER_SEC) / (column.megapixels * 1e6);
    }
    std::sort(times, times + 3);
    column.nanoseconds.push_back(isDone ? times[1] : -1);
}

constexpr const char* works[] = {"save BMP",  "load BMP", "save PNG, level 1", "load PNG",       "save JPEG",
                                 "load JPEG", "draw",     "turn by 30",        "resize to 70 %", "resample to 40 %",
                                 "mirror"};

Column measured(double megapixels) {
    const auto height = static_cast<std::int32_t>(1000 * std::sqrt(megapixels / 2)), width = 2 * height;
    Column column{static_cast<double>(width) * height / 1e6, {}};
    cPixSheet sheet, other;
    fill(sheet, width, height);
    sheet.HighQualityInterpolation(true);
    sheet.PngPropertySet(pixkit::pngCompressionLevel, 1);
    ByteArray file;
    const auto nothing = [] {};
    const auto emptied = [&] { other.DestroyDIB(); };
    const auto load = [&] { return other.LoadPicture_Stream(file); };
    time(column, nothing, [&] { return sheet.SaveToStream_Bitmap(file); });
    time(column, emptied, load);
    time(column, nothing, [&] { return sheet.SaveToStream_PNG(file); });
    time(column, emptied, load);
    time(column, nothing, [&] { return sheet.SaveToStream_JPG(file); });
    time(column, emptied, load);
    file = {};
    const auto draw = [&](float angle) {
        return sheet.Render(0, 0, 0, 0, 0, 0, 0, 0, 0, 50, true, true, &other, pixkit::gsclNone, 0, angle);
    };
    fill(other, width, height);
    time(column, nothing, [&] { return draw(0); });
    time(column, nothing, [&] { return draw(30); });
    const auto copied = [&] { sheet.CopyImageTo(other); };
    time(column, copied, [&] { return other.Resize(width / 10 * 7, height / 10 * 7); });
    time(column, copied, [&] { return other.Resample(width / 10 * 4, height / 10 * 4); });
    time(column, copied, [&] { return other.MirrorImage(true, false); });
    return column;
}

} // namespace

int main(int argc, char** argv) {
    std::vector<Column> columns;
    for (int i = 1; i < argc; ++i)
        columns.push_back(measured(std::atof(argv[i])));
    if (argc == 1)
        for (const double megapixels : {4.0, 16.0, 64.0, 200.0})
            columns.push_back(measured(megapixels));
    std::printf("%-20s", "megapixels");
    for (const Column& column : columns)
        std::printf("%10.1f", column.megapixels);
    for (std::size_t work = 0; work < std::size(works); ++work) {
        std::printf("\n%-20s", works[work]);
        for (const Column& column : columns)
            std::printf("%10.2f", column.nanoseconds[work]);
    }
    std::puts("");
}
// SPDX-License-Identifier: MIT
