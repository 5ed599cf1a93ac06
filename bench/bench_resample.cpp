// Resampling to sizes in simple and in odd proportions to the source's, beside pixman, libyuv and OpenCV, and rotation
// by 30 degrees beside cairo and OpenCV, all in one thread.
#include "noise.h"
#include "program.h"
#include "render/Resampler.h"
#include "render/Rotator.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <cairo.h>
#include <numbers>
#ifdef PIXKIT_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#include <pixman.h>
#ifdef PIXKIT_BENCH_YUV
#include <libyuv/scale_argb.h>
#endif
#include <string>
#include <vector>

namespace {

using pixkit::PixelBuffer;

struct Size {
    const char* name;
    std::size_t width, height;
};
constexpr Size sizes[] = {{"256", 256, 256}, {"1080p", 1920, 1080}, {"4096", 4096, 4096}};

// Both axes by steps of a half, a half, a quarter, two thirds, five fourths, ten sevenths, and by steps that hardly
// ever fall on the same place again.
struct Scaling {
    const char* name;
    Size from, to;
};
constexpr Scaling scalings[] = {
    {"1080p-to-720p", sizes[1], {"", 1280, 720}},       {"1080p-to-2160p", sizes[1], {"", 3840, 2160}},
    {"64-to-256", {"", 64, 64}, {"", 256, 256}},        {"256-to-384", sizes[0], {"", 384, 384}},
    {"1080p-to-150%", sizes[1], {"", 2880, 1620}},      {"1080p-to-80%", sizes[1], {"", 1536, 864}},
    {"1080p-to-70%", sizes[1], {"", 1344, 756}},        {"1080p-to-1001x563", sizes[1], {"", 1001, 563}},
    {"1080p-to-2503x1409", sizes[1], {"", 2503, 1409}}, {"4096-to-150%", sizes[2], {"", 6144, 6144}}};

// Premultiplied noise over slow gradients.
PixelBuffer picture(std::size_t width, std::size_t height) {
    return bench::noisePicture(width, height, [](std::uint8_t* p, std::size_t x, std::size_t y, std::uint32_t noise) {
        const auto alpha = static_cast<std::uint32_t>(128 + (x + y) % 128);
        for (unsigned channel = 0; channel < 3; ++channel)
            p[channel] = static_cast<std::uint8_t>((noise >> (8 * channel)) % (alpha + 1));
        p[3] = static_cast<std::uint8_t>(alpha);
    });
}

void countPixels(benchmark::State& state, const PixelBuffer& output) {
    bench::countPixels(state, static_cast<double>(output.width()) * static_cast<double>(output.height()));
}

// Source and result of one scaling, as `resize` fills it.
template <class Resize>
void measure(benchmark::State& state, const Scaling& scaling, Resize resize) {
    PixelBuffer source = picture(scaling.from.width, scaling.from.height);
    PixelBuffer output(scaling.to.width, scaling.to.height);
    std::fill_n(output.view().bits, output.width() * output.height() * 4, std::uint8_t{0});
    for (auto _ : state) {
        resize(output.view(), source.view());
        benchmark::ClobberMemory();
    }
    countPixels(state, output);
}

void ownResize(benchmark::State& state, const Scaling& scaling, bool highQuality) {
    measure(state, scaling, [=](pixkit::PixelView output, pixkit::PixelView source) {
        pixkit::spt_pvResize(output, source, highQuality);
    });
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

void pixmanResize(benchmark::State& state, const Scaling& scaling, bool highQuality) {
    measure(state, scaling, [=](pixkit::PixelView output, pixkit::PixelView source) {
        const PixmanImage from(source);
        const PixmanImage to(output);
        const auto step = [](std::size_t all, std::size_t parts) {
            return pixman_double_to_fixed(static_cast<double>(all) / static_cast<double>(parts));
        };
        pixman_transform_t transform;
        pixman_transform_init_scale(&transform, step(source.width, output.width), step(source.height, output.height));
        pixman_image_set_transform(from.image, &transform);
        pixman_image_set_filter(from.image, highQuality ? PIXMAN_FILTER_BILINEAR : PIXMAN_FILTER_NEAREST, nullptr, 0);
        pixman_image_set_repeat(from.image, PIXMAN_REPEAT_PAD);
        pixman_image_composite32(PIXMAN_OP_SRC, from.image, nullptr, to.image, 0, 0, 0, 0, 0, 0,
                                 static_cast<int>(output.width), static_cast<int>(output.height));
    });
}

#ifdef PIXKIT_BENCH_YUV
void yuvResize(benchmark::State& state, const Scaling& scaling, bool highQuality) {
    measure(state, scaling, [=](pixkit::PixelView output, pixkit::PixelView source) {
        libyuv::ARGBScale(source.bits, static_cast<int>(source.stride), static_cast<int>(source.width),
                          static_cast<int>(source.height), output.bits, static_cast<int>(output.stride),
                          static_cast<int>(output.width), static_cast<int>(output.height),
                          highQuality ? libyuv::kFilterBilinear : libyuv::kFilterNone);
    });
}
#endif

#ifdef PIXKIT_BENCH_OPENCV
cv::Mat matrixOf(pixkit::PixelView view) {
    return cv::Mat(static_cast<int>(view.height), static_cast<int>(view.width), CV_8UC4, view.bits);
}

void openCvResize(benchmark::State& state, const Scaling& scaling, bool highQuality) {
    cv::setNumThreads(1);
    measure(state, scaling, [=](pixkit::PixelView output, pixkit::PixelView source) {
        cv::Mat to = matrixOf(output);
        cv::resize(matrixOf(source), to, to.size(), 0, 0, highQuality ? cv::INTER_LINEAR : cv::INTER_NEAREST);
    });
}

// Without blending: pixels that the picture does not reach stay.
void openCvRotation(benchmark::State& state, const Size& size, bool highQuality) {
    cv::setNumThreads(1);
    PixelBuffer source = picture(size.width, size.height);
    PixelBuffer output = picture(size.width, size.height);
    const cv::Point2f centre(static_cast<float>(size.width) / 2, static_cast<float>(size.height) / 2);
    const cv::Mat turn = cv::getRotationMatrix2D(centre, -30, 1);
    for (auto _ : state) {
        cv::Mat to = matrixOf(output.view());
        cv::warpAffine(matrixOf(source.view()), to, turn, to.size(), highQuality ? cv::INTER_LINEAR : cv::INTER_NEAREST,
                       cv::BORDER_TRANSPARENT);
        benchmark::ClobberMemory();
    }
    countPixels(state, source);
}
#endif

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
        for (const Scaling& scaling : scalings) {
            const std::string name = std::string(highQuality ? "bilinear/" : "nearest/") + scaling.name + "/";
            const auto with = [&](auto resize) {
                return [=, &scaling](benchmark::State& state) { resize(state, scaling, highQuality); };
            };
            bench::add(name + "pixkit", with(ownResize));
            bench::add(name + "pixman", with(pixmanResize));
#ifdef PIXKIT_BENCH_YUV
            bench::add(name + "libyuv", with(yuvResize));
#endif
#ifdef PIXKIT_BENCH_OPENCV
            bench::add(name + "opencv", with(openCvResize));
#endif
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
#ifdef PIXKIT_BENCH_OPENCV
            bench::add(name + "opencv", with(openCvRotation));
#endif
        }
    }
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
