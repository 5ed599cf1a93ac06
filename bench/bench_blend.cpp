// Drawing one picture over an opaque one: Render onto a host beside pixman and cairo, and beside the limit that memory
// sets, a loop that reads both pictures and writes one; and the kernel alone, for what Render adds to it. Then what
// gray and lightness cost.
#include "kernels/kernels.h"
#include "program.h"
#include "surface/cPixSheet.h"
#include <cairo.h>
#include <cstring>
#include <pixman.h>
#include <string>
#include <vector>

namespace {

using pixkit::cPixSheet;

struct Size {
    const char* name;
    std::int32_t width, height;
};
constexpr Size sizes[] = {{"256", 256, 256}, {"1080p", 1920, 1080}, {"4096", 4096, 4096}};

struct Case {
    Size size;
    bool isDrawing; // stretches of 96 clear and opaque pixels with soft edges; else every pixel is translucent
    std::int32_t Opacity;
    std::int32_t grayScale = pixkit::gsclNone;
    float LightAdjustment = 0;
};

void fill(cPixSheet& sheet, bool isDrawing) {
    std::uint32_t state = 1;
    const auto below = [&](std::uint32_t limit) {
        state = state * 1664525 + 1013904223;
        return (state >> 8) % limit;
    };
    std::uint8_t* p = sheet.BitsPointer();
    for (std::int32_t i = 0; i < sheet.Width() * sheet.Height(); ++i, p += 4) {
        const bool isSoft = !isDrawing || i % 96 < 4;
        const std::uint32_t alpha = isSoft ? 1 + below(254) : i / 96 % 2 == 0 ? 255 : 0;
        for (int channel = 0; channel < 3; ++channel)
            p[channel] = static_cast<std::uint8_t>(below(alpha + 1));
        p[3] = static_cast<std::uint8_t>(alpha);
    }
}

struct Pictures {
    explicit Pictures(const Case& what) {
        for (cPixSheet* sheet : {&source, &host})
            sheet->InitializeDIB(what.size.width, what.size.height);
        fill(source, what.isDrawing);
        std::memset(host.BitsPointer(), 255, bytes());
        source.isAlphaBlendFriendly(false);
    }
    std::size_t bytes() const {
        return static_cast<std::size_t>(source.scanWidth()) * static_cast<std::size_t>(source.Height());
    }
    cPixSheet source;
    cPixSheet host;
};

template <class Work>
void measure(benchmark::State& state, const Pictures& pictures, Work work) {
    for (auto _ : state) {
        work();
        benchmark::ClobberMemory();
    }
    bench::countPixels(state, static_cast<double>(pictures.bytes() / 4));
}

void own(benchmark::State& state, const Case& what) {
    Pictures pictures(what);
    measure(state, pictures, [&] {
        pictures.source.Render(0, 0, 0, 0, 0, 0, 0, 0, 0, what.Opacity, true, true, &pictures.host, what.grayScale,
                               what.LightAdjustment);
    });
}

void kernelAlone(benchmark::State& state, const Case& what) {
    Pictures pictures(what);
    const auto& kernel = pixkit::kernels::table();
    std::uint8_t* const to = pictures.host.BitsPointer();
    const std::uint8_t* const from = pictures.source.BitsPointer();
    const auto globalAlpha = static_cast<std::uint8_t>(what.Opacity * 255 / 100);
    measure(state, pictures, [&] {
        if (globalAlpha == 255)
            kernel.blendOver(to, from, pictures.bytes() / 4);
        else
            kernel.blendScaled(to, from, pictures.bytes() / 4, globalAlpha);
    });
}

void withPixman(benchmark::State& state, const Case& what) {
    Pictures pictures(what);
    const auto image = [](cPixSheet& sheet) {
        return pixman_image_create_bits(PIXMAN_a8r8g8b8, sheet.Width(), sheet.Height(),
                                        reinterpret_cast<std::uint32_t*>(sheet.BitsPointer()), sheet.scanWidth());
    };
    pixman_image_t* const source = image(pictures.source);
    pixman_image_t* const host = image(pictures.host);
    const pixman_color_t opacity = {0, 0, 0, static_cast<std::uint16_t>(what.Opacity * 0xFFFF / 100)};
    pixman_image_t* const mask = what.Opacity == 100 ? nullptr : pixman_image_create_solid_fill(&opacity);
    measure(state, pictures, [&] {
        pixman_image_composite32(PIXMAN_OP_OVER, source, mask, host, 0, 0, 0, 0, 0, 0, what.size.width,
                                 what.size.height);
    });
    for (pixman_image_t* used : {source, host})
        pixman_image_unref(used);
    if (mask != nullptr) pixman_image_unref(mask);
}

void withCairo(benchmark::State& state, const Case& what) {
    Pictures pictures(what);
    const auto surface = [](cPixSheet& sheet) {
        return cairo_image_surface_create_for_data(sheet.BitsPointer(), CAIRO_FORMAT_ARGB32, sheet.Width(),
                                                   sheet.Height(), sheet.scanWidth());
    };
    cairo_surface_t* const source = surface(pictures.source);
    cairo_surface_t* const host = surface(pictures.host);
    cairo_t* const context = cairo_create(host);
    cairo_set_source_surface(context, source, 0, 0);
    measure(state, pictures, [&] {
        cairo_paint_with_alpha(context, what.Opacity / 100.0);
        cairo_surface_flush(host);
    });
    cairo_destroy(context);
    cairo_surface_destroy(source);
    cairo_surface_destroy(host);
}

void triad(benchmark::State& state, const Case& what) {
    Pictures pictures(what);
    measure(state, pictures, [&] {
        const auto* const a = reinterpret_cast<const std::uint64_t*>(pictures.source.BitsPointer());
        auto* const b = reinterpret_cast<std::uint64_t*>(pictures.host.BitsPointer());
        const std::size_t count = pictures.bytes() / sizeof *a;
        for (std::size_t i = 0; i < count; ++i)
            b[i] += a[i];
    });
}

using Run = void (*)(benchmark::State&, const Case&);

void add(const std::string& name, Run run, const Case& what) {
    bench::add(name, [=](benchmark::State& state) { run(state, what); });
}

} // namespace

int main(int argc, char** argv) {
    for (const std::int32_t opacity : {100, 50}) {
        for (const Size& size : sizes) {
            for (const bool isDrawing : {true, false}) {
                const Case what{size, isDrawing, opacity};
                const std::string name = "blend-at-" + std::to_string(opacity) + "/" + size.name +
                                         (isDrawing ? "-drawing/" : "-translucent/");
                add(name + "pixkit", own, what);
                add(name + "kernel", kernelAlone, what);
                add(name + "pixman", withPixman, what);
                add(name + "cairo", withCairo, what);
                add(name + "triad", triad, what);
            }
        }
    }
    for (const Size& size : sizes) {
        const std::string name = std::string("blend-tones/") + size.name + "-translucent/";
        add(name + "pixkit-plain", own, {size, false, 100});
        add(name + "gray", own, {size, false, 100, pixkit::gsclNTSCPAL});
        add(name + "lighter", own, {size, false, 100, pixkit::gsclNone, 25});
        add(name + "both", own, {size, false, 100, pixkit::gsclNTSCPAL, 25});
    }
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
