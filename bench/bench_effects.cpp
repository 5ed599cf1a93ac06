// The effects as callers reach them, through the public members, against memcpy.
#include "against_memcpy.h"
#include "surface/cPixSheet.h"

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
};

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
    for (const Effect& effect : effects) {
        bench::addTimed(std::string("effects/") + effect.name + "/pixkit",
                        [&effect](benchmark::State& state) { measure(state, effect); });
    }
    return bench::run(argc, argv);
}
