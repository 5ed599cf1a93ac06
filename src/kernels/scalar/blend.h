// Reference kernels for drawing one picture over another.
#pragma once
#include "kernels/scalar/effects.h"

#include <algorithm>
#include <cstring>

namespace pixkit::kernels {
namespace {

// Only colour above its alpha, which no valid picture has, ever reaches the limit.
std::uint8_t held(unsigned value) {
    return static_cast<std::uint8_t>(std::min(value, 255U));
}

void blendOver(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count > 0; --count, dst += 4, src += 4) {
        const unsigned srcAlpha = src[3];
        if (srcAlpha == 0) continue; // whatever colour a clear pixel holds
        if (srcAlpha == 255) {
            std::memcpy(dst, src, 4);
            continue;
        }
        const unsigned dstAlpha = 255 - srcAlpha;
        for (int channel = 0; channel < 4; ++channel)
            dst[channel] = held(dst[channel] * dstAlpha / 255 + src[channel]);
    }
}

void blendScaled(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha) {
    for (; count > 0; --count, dst += 4, src += 4) {
        const unsigned srcAlpha = src[3];
        if (srcAlpha == 0) continue;
        const unsigned dstAlpha = 255 - srcAlpha * globalAlpha / 255;
        for (int channel = 0; channel < 4; ++channel)
            dst[channel] = held((dst[channel] * dstAlpha + src[channel] * unsigned{globalAlpha}) / 255);
    }
}

void blendToned(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha,
                const Tone& tone) {
    for (; count > 0; --count, dst += 4, src += 4) {
        std::uint8_t pixel[4];
        std::memcpy(pixel, src, sizeof pixel);
        if (tone.isLight) adjustLightness(pixel, pixel, 1, tone);
        if (tone.isGray) grayscale(pixel, 1, tone.weights);
        blendScaled(dst, pixel, 1, globalAlpha); // at 255 the same as blendOver
    }
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
