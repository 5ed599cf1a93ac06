// Pictures for benchmarks that need none of the corpus.
#pragma once
#include "render/PixelBuffer.h"
#include <cstdint>

namespace bench {

// `fill(p, x, y, noise)` writes the pixel at p, of noise that is the same in every run.
template <class Fill>
pixkit::PixelBuffer noisePicture(std::size_t width, std::size_t height, Fill fill) {
    pixkit::PixelBuffer buffer(width, height);
    std::uint32_t state = 1;
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            state = state * 1664525 + 1013904223;
            fill(buffer.view().row(y) + 4 * x, x, y, state);
        }
    }
    return buffer;
}

} // namespace bench
// SPDX-License-Identifier: MIT
