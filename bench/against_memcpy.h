// Measures work on a picture of 1920 x 1080 against memcpy of its 8.3 MB.
#pragma once
#include "program.h"
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <vector>

namespace bench {

inline constexpr std::size_t width = 1920;
inline constexpr std::size_t height = 1080;
inline constexpr std::size_t pixelBytes = 4 * width * height;

// Premultiplied pixels. Drawing-like: runs of clear and opaque ones with soft edges between them; else partial alpha
// throughout, which no kernel has a short way for.
inline std::vector<std::uint8_t> premultipliedPixels(bool drawingLike) {
    std::vector<std::uint8_t> pixels(pixelBytes);
    std::uint32_t state = 1;
    const auto below = [&](std::uint32_t limit) {
        state = state * 1664525 + 1013904223;
        return (state >> 8) % limit;
    };
    for (std::size_t i = 0; i < pixelBytes;) {
        const std::uint32_t kind = drawingLike ? below(5) : 4;
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

inline double median(std::vector<double> values) {
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

// Each round times memcpy and the work in turn, so that both meet the same machine; both rates come from the median.
template <class Work>
void measureAgainstMemcpy(benchmark::State& state, const std::uint8_t* pixels, Work work) {
    std::vector<std::uint8_t> copy(pixelBytes, 1);
    std::vector<double> own;
    std::vector<double> copying;
    for (auto _ : state) {
        copying.push_back(secondsOf([&] { std::memcpy(copy.data(), pixels, pixelBytes); }));
        own.push_back(secondsOf(work));
        state.SetIterationTime(own.back());
    }
    constexpr double megapixels = static_cast<double>(width * height) / 1e6;
    state.counters["Mpixel/s"] = megapixels / median(own);
    state.counters["memcpy Mpixel/s"] = megapixels / median(copying);
}

// `run` gets a benchmark::State.
template <class Run>
void addTimed(const std::string& name, Run run) {
    add(name, run)->UseManualTime();
}

} // namespace bench
// SPDX-License-Identifier: MIT
