// The effects as callers reach them, through the public members, against memcpy, and beside libyuv where it has the
// same.
#include "against_memcpy.h"
#include "surface/cPixSheet.h"
#include <array>
#ifdef PIXKIT_BENCH_YUV
#include <libyuv/planar_functions.h>
#endif

namespace {

using pixkit::cPixSheet;

struct Effect {
    const char* name;
    bool (*apply)(cPixSheet& sheet);
};

const Effect effects[] = {
    {"MakeImageInverse", [](cPixSheet& sheet) { return sheet.MakeImageInverse(); }},
    {"MakeGrayScale", [](cPixSheet& sheet) { return sheet.MakeGrayScale(pixkit::gsclNTSCPAL); }},
    {"MakeLighterDarker", [](cPixSheet& sheet) { return sheet.MakeLighterDarker(25); }},
    {"BlendToColor", [](cPixSheet& sheet) { return sheet.BlendToColor(0x0080FF, 33); }},
    {"MirrorImage", [](cPixSheet& sheet) { return sheet.MirrorImage(true, false); }},
};

#ifdef PIXKIT_BENCH_YUV
// In place, but for mirroring, which is from one picture to another there. Its gray has weights of seven bits; what
// inverts and mixes are matrices of six.
const Effect peers[] = {
    {"MakeImageInverse",
     [](cPixSheet& sheet) {
         static constexpr std::int8_t matrix[] = {-64, 0, 0, 64, 0, -64, 0, 64, 0, 0, -64, 64, 0, 0, 0, 64};
         return libyuv::ARGBColorMatrix(sheet.BitsPointer(), sheet.scanWidth(), sheet.BitsPointer(), sheet.scanWidth(),
                                        matrix, sheet.Width(), sheet.Height()) == 0;
     }},
    {"MakeGrayScale",
     [](cPixSheet& sheet) {
         return libyuv::ARGBGray(sheet.BitsPointer(), sheet.scanWidth(), 0, 0, sheet.Width(), sheet.Height()) == 0;
     }},
    {"BlendToColor",
     [](cPixSheet& sheet) {
         static constexpr std::int8_t matrix[] = {43, 0, 0, 0, 0, 43, 0, 10, 0, 0, 43, 21, 0, 0, 0, 64};
         return libyuv::ARGBColorMatrix(sheet.BitsPointer(), sheet.scanWidth(), sheet.BitsPointer(), sheet.scanWidth(),
                                        matrix, sheet.Width(), sheet.Height()) == 0;
     }},
    {"MirrorImage",
     [](cPixSheet& sheet) {
         static std::vector<std::uint8_t> mirrored(bench::pixelBytes);
         return libyuv::ARGBMirror(sheet.BitsPointer(), sheet.scanWidth(), mirrored.data(), sheet.scanWidth(),
                                   sheet.Width(), sheet.Height()) == 0;
     }},
};
#else
const std::array<Effect, 0> peers;
#endif

void measure(benchmark::State& state, const Effect& effect) {
    cPixSheet sheet;
    sheet.InitializeDIB(static_cast<std::int32_t>(bench::width), static_cast<std::int32_t>(bench::height));
    if (sheet.BitsPointer() == nullptr || !effect.apply(sheet)) {
        state.SkipWithError("no picture, or no effect");
        return;
    }
    const std::vector<std::uint8_t> pixels = bench::premultipliedPixels(true);
    std::memcpy(sheet.BitsPointer(), pixels.data(), bench::pixelBytes);
    bench::measureAgainstMemcpy(state, sheet.BitsPointer(), [&] { effect.apply(sheet); });
}

} // namespace

int main(int argc, char** argv) {
    const auto add = [](const Effect& effect, const char* who) {
        bench::addTimed(std::string("effects/") + effect.name + who,
                        [&effect](benchmark::State& state) { measure(state, effect); });
    };
    for (const Effect& effect : effects)
        add(effect, "/pixkit");
    for (const Effect& peer : peers)
        add(peer, "/libyuv");
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
