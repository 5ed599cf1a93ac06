// Lightness, for every kernel that adjusts it.
#pragma once
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

// What a tone adds to colours or takes from them, by its line; in the highest byte of each lane.
struct Adjustment {
    explicit Adjustment(const Tone& tone) : scale(all32(tone.scale)), bias(all32(tone.bias)) {}

    Vec operator()(Vec pixels) const { return add32(multiplyLow32(shiftRight32<24>(pixels), scale), bias); }

    Vec scale, bias;
};

// Both get pixels, and their alpha in all bytes, and leave alpha as it is.
struct Lighter {
    Adjustment adjustment;
    Vec operator()(Vec pixels, Vec alpha) const {
        return min8(addSaturated8(pixels, highInColours(adjustment(pixels))), alpha);
    }
};
struct Darker {
    Adjustment adjustment;
    Vec operator()(Vec pixels, Vec) const { return subtractSaturated8(pixels, highInColours(adjustment(pixels))); }
};

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
