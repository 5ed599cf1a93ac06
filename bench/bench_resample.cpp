// Resampling to half as large again and to 70 %, and rotation by 30 degrees, beside pixman and cairo. Sizes are those
// of the source.
#include "noise.h"
#include "program.h"
#include "render/Resampler.h"
#include "render/Rotator.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <cairo.h>
#include <numbers>
#include <pixman.h>
#include <string>
#include <vector>

namespace {

using pixkit::PixelBuffer;

struct Size {
    const char* name;
    std::size_t width, height;
};
constexpr Size sizes[] = {{"256", 256, 256}, {"1080p", 1920, 1080}, {"4096", 4096, 4096}};
constexpr double factors[] = {1.5, 0.7};

// Premultiplied noise over slow gradients.
PixelBuffer picture(std::size_t width, std::size_t height) {
    return bench::noisePicture(width, height, [](std::uint8_t* p, std::size_t x, std::size_t y, std::uint32_t noise) {
        const auto alpha = static_cast<std::uint32_t>(128 + (x + y) % 128);
        for (unsigned channel = 0; channel < 3; ++channel)
            p[channel] = static_cast<std::uint8_t>((noise >> (8 * channel)) % (alpha + 1));
        p[3] = static_cast<std::uint8_t>(alpha);
    });
}

std::size_t scaled(std::size_t size, double factor) {
    return static_cast<std::size_t>(static_cast<double>(size) * factor);
}

void countPixels(benchmark::State& state, const PixelBuffer& output) {
    bench::countPixels(state, static_cast<double>(output.width()) * static_cast<double>(output.height()));
}

void ownResize(benchmark::State& state, const Size& size, double factor, bool highQuality) {
    const PixelBuffer source = picture(size.width, size.height);
    PixelBuffer output(scaled(size.width, factor), scaled(size.height, factor));
    std::fill_n(output.view().bits, output.width() * output.height() * 4, std::uint8_t{0});
    for (auto _ : state) {
        pixkit::spt_pvResize(output.view(), source.view(), highQuality);
        benchmark::ClobberMemory();
    }
    countPixels(state, output);
}

struct PixmanImage {
    explicit PixmanImage(pixkit::ConstPixelView view)
        : image(pixman_image_create_bits(PIXMAN_a8r8g8b8, static_cast<int>(view.width), static_cast<int>(view.height),
                                         reinterpret_cast<std::uint32_t*>(const_cast<std::uint8_t*>(view.bits)),
                                         static_cast<int>(view.stride))) {}
    ~PixmanImage() { pixman_image_unref(image); }
    PixmanImage(const PixmanImage&) = delete;
    PixmanImage& operator=(const PixmanImage&) = delete;
    pixman_image_t* image;
};

void pixmanResize(benchmark::State& state, const Size& size, double factor, bool highQuality) {
    const PixelBuffer source = picture(size.width, size.height);
    PixelBuffer output(scaled(size.width, factor), scaled(size.height, factor));
    std::fill_n(output.view().bits, output.width() * output.height() * 4, std::uint8_t{0});
    const PixmanImage from(source.view());
    const PixmanImage to(output.view());
    pixman_transform_t transform;
    pixman_transform_init_scale(&transform, pixman_double_to_fixed(1 / factor), pixman_double_to_fixed(1 / factor));
    pixman_image_set_transform(from.image, &transform);
    pixman_image_set_filter(from.image, highQuality ? PIXMAN_FILTER_BILINEAR : PIXMAN_FILTER_NEAREST, nullptr, 0);
    pixman_image_set_repeat(from.image, PIXMAN_REPEAT_PAD);
    for (auto _ : state) {
        pixman_image_composite32(PIXMAN_OP_SRC, from.image, nullptr, to.image, 0, 0, 0, 0, 0, 0,
                                 static_cast<int>(output.width()), static_cast<int>(output.height()));
        benchmark::ClobberMemory();
    }
    countPixels(state, output);
}

// The picture about its centre by 30 degrees, over a host of its size; only the host's pixels count.
void ownRotation(benchmark::State& state, const Size& size, bool highQuality) {
    const PixelBuffer source = picture(size.width, size.height);
    const auto width = static_cast<std::int32_t>(size.width);
    const auto height = static_cast<std::int32_t>(size.height);
    pixkit::cPixSheet host;
    host.InitializeDIB(width, height);
    const pixkit::DrawJob job = {.image = source.view(),
                                 .source = source.view().rect(),
                                 .destHostDIB = &host,
                                 .destination = source.view().rect(),
                                 .HighQuality = highQuality,
                                 .Angle = 30};
    for (auto _ : state) {
        pixkit::DrawJob rotated = job;
        pixkit::spt_RotateImage(rotated);
        benchmark::ClobberMemory();
    }
    countPixels(state, source);
}

void cairoRotation(benchmark::State& state, const Size& size, bool highQuality) {
    PixelBuffer source = picture(size.width, size.height);
    PixelBuffer output = picture(size.width, size.height);
    const auto surface = [](PixelBuffer& buffer) {
        return cairo_image_surface_create_for_data(buffer.view().bits, CAIRO_FORMAT_ARGB32,
                                                   static_cast<int>(buffer.width()), static_cast<int>(buffer.height()),
                                                   static_cast<int>(buffer.view().stride));
    };
    cairo_surface_t* const from = surface(source);
    cairo_surface_t* const to = surface(output);
    cairo_t* const cairo = cairo_create(to);
    const double x = static_cast<double>(size.width) / 2;
    const double y = static_cast<double>(size.height) / 2;
    cairo_translate(cairo, x, y);
    cairo_rotate(cairo, 30 * std::numbers::pi / 180);
    cairo_translate(cairo, -x, -y);
    cairo_set_source_surface(cairo, from, 0, 0);
    cairo_pattern_set_filter(cairo_get_source(cairo), highQuality ? CAIRO_FILTER_BILINEAR : CAIRO_FILTER_NEAREST);
    for (auto _ : state) {
        cairo_paint(cairo);
        benchmark::ClobberMemory();
    }
    cairo_destroy(cairo);
    cairo_surface_destroy(to);
    cairo_surface_destroy(from);
    countPixels(state, source);
}

} // namespace

int main(int argc, char** argv) {
    for (const bool highQuality : {false, true}) {
        for (const Size& size : sizes) {
            for (const double factor : factors) {
                const std::string name = std::string(highQuality ? "bilinear/" : "nearest/") + size.name + "-to-" +
                                         std::to_string(static_cast<int>(factor * 100)) + "%/";
                const auto with = [&](auto resize) {
                    return [=, &size](benchmark::State& state) { resize(state, size, factor, highQuality); };
                };
                bench::add(name + "pixkit", with(ownResize));
                bench::add(name + "pixman", with(pixmanResize));
            }
        }
    }
    for (const bool highQuality : {false, true}) {
        for (const Size& size : sizes) {
            const std::string name = std::string("rotate 30/") + size.name + (highQuality ? "-bilinear/" : "-nearest/");
            const auto with = [&](auto rotate) {
                return [=, &size](benchmark::State& state) { rotate(state, size, highQuality); };
            };
            bench::add(name + "pixkit", with(ownRotation));
            bench::add(name + "cairo", with(cairoRotation));
        }
    }
    return bench::run(argc, argv);
}
