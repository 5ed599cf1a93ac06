// Resampling by filters: 8 megapixels to one, to a thumbnail and enlarged, beside libvips and OpenCV, each in one
// thread and with the filter that it has of ours. vips_resize halves pictures by plain means first where it shrinks by
// more than two times two, which is faster than its filter and not the same.
#include "noise.h"
#include "program.h"
#include "shared/Resampling.h"
#ifdef PIXKIT_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#ifdef PIXKIT_BENCH_VIPS
#include <vips/vips.h>
#endif
#include <stdexcept>
#include <string>

namespace {

using pixkit::PixelBuffer;

struct Size {
    const char* name;
    std::size_t fromWidth, fromHeight, width, height;
};
constexpr Size sizes[] = {
    {"8MP-to-1MP", 3266, 2449, 1155, 866}, {"8MP-to-256", 3266, 2449, 256, 192}, {"1MP-to-2MP", 1155, 866, 1633, 1225}};

// Slow gradients with noise, opaque.
PixelBuffer picture(std::size_t width, std::size_t height) {
    return bench::noisePicture(width, height, [](std::uint8_t* p, std::size_t x, std::size_t y, std::uint32_t noise) {
        for (unsigned channel = 0; channel < 3; ++channel)
            p[channel] = static_cast<std::uint8_t>((x + y) / 32 + (noise >> (8 * channel + 6)) % 64);
        p[3] = 255;
    });
}

void own(benchmark::State& state, const Size& size, pixkit::eResampleFilters filter) {
    const PixelBuffer source = picture(size.fromWidth, size.fromHeight);
    PixelBuffer target(size.width, size.height);
    for (auto _ : state) {
        pixkit::resample(target.view(), source.view(), {.across = filter, .along = filter});
        benchmark::ClobberMemory();
    }
    bench::countPixels(state, static_cast<double>(size.fromWidth * size.fromHeight));
}

#ifdef PIXKIT_BENCH_OPENCV
void openCv(benchmark::State& state, const Size& size, int interpolation) {
    cv::setNumThreads(1);
    PixelBuffer source = picture(size.fromWidth, size.fromHeight);
    PixelBuffer target(size.width, size.height);
    const auto matrix = [](PixelBuffer& buffer) {
        return cv::Mat(static_cast<int>(buffer.height()), static_cast<int>(buffer.width()), CV_8UC4,
                       buffer.view().bits);
    };
    const cv::Mat from = matrix(source);
    cv::Mat to = matrix(target);
    for (auto _ : state) {
        cv::resize(from, to, to.size(), 0, 0, interpolation);
        benchmark::ClobberMemory();
    }
    bench::countPixels(state, static_cast<double>(size.fromWidth * size.fromHeight));
}
#endif

#ifdef PIXKIT_BENCH_VIPS
void vips(benchmark::State& state, const Size& size, VipsKernel kernel) {
    vips_concurrency_set(1);
    vips_cache_set_max(0);
    const PixelBuffer source = picture(size.fromWidth, size.fromHeight);
    for (auto _ : state) {
        VipsImage* const from = vips_image_new_from_memory(source.view().bits, source.width() * source.height() * 4,
                                                           static_cast<int>(source.width()),
                                                           static_cast<int>(source.height()), 4, VIPS_FORMAT_UCHAR);
        VipsImage* to = nullptr;
        const double scale = static_cast<double>(size.width) / static_cast<double>(size.fromWidth);
        if (vips_resize(from, &to, scale, "kernel", kernel, nullptr) != 0) throw std::runtime_error("not resized");
        std::size_t bytes = 0;
        void* const pixels = vips_image_write_to_memory(to, &bytes);
        benchmark::DoNotOptimize(pixels);
        g_free(pixels);
        g_object_unref(to);
        g_object_unref(from);
    }
    bench::countPixels(state, static_cast<double>(size.fromWidth * size.fromHeight));
}
#endif

} // namespace

int main(int argc, char** argv) {
    struct Filter {
        const char* name;
        pixkit::eResampleFilters filter;
    };
    constexpr Filter filters[] = {{"area", pixkit::resampleArea},
                                  {"triangle", pixkit::resampleTriangle},
                                  {"mitchell", pixkit::resampleMitchell},
                                  {"lanczos3", pixkit::resampleLanczos3}};
    for (const Size& size : sizes) {
        for (const Filter& filter : filters) {
            const std::string name = std::string(size.name) + "/" + filter.name + "/";
            const auto add = [&](const char* peer, auto run) {
                bench::add(name + peer, run)->MeasureProcessCPUTime()->UseRealTime();
            };
            add("pixkit", [=, &size](benchmark::State& state) { own(state, size, filter.filter); });
            [[maybe_unused]] const bool shrinks = size.width < size.fromWidth;
#ifdef PIXKIT_BENCH_OPENCV
            if (filter.filter == pixkit::resampleArea && shrinks)
                add("opencv", [&size](benchmark::State& state) { openCv(state, size, cv::INTER_AREA); });
            if (filter.filter == pixkit::resampleLanczos3 && !shrinks) // 8 x 8 pixels
                add("opencv", [&size](benchmark::State& state) { openCv(state, size, cv::INTER_LANCZOS4); });
#endif
#ifdef PIXKIT_BENCH_VIPS
            if (filter.filter == pixkit::resampleArea) continue;
            const VipsKernel kernel = filter.filter == pixkit::resampleTriangle   ? VIPS_KERNEL_LINEAR
                                      : filter.filter == pixkit::resampleMitchell ? VIPS_KERNEL_MITCHELL
                                                                                  : VIPS_KERNEL_LANCZOS3;
            add("vips", [=, &size](benchmark::State& state) { vips(state, size, kernel); });
#endif
        }
    }
#ifdef PIXKIT_BENCH_VIPS
    if (vips_init(argv[0]) != 0) return 1;
#endif
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
