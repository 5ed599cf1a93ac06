// Reference kernels for the effects.
#pragma once
#include "kernels/reference.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace pixkit::kernels {
namespace {

void invert(std::uint8_t* pixels, std::size_t count) {
    for (std::uint8_t* p = pixels; count > 0; --count, p += 4) {
        const int alpha = p[3];
        if (alpha == 0) continue;
        for (int channel = 0; channel < 3; ++channel)
            p[channel] = static_cast<std::uint8_t>(std::max(alpha - p[channel], 0));
    }
}

void grayscale(std::uint8_t* pixels, std::size_t count, const GrayWeights& weights) {
    const double b = weights.b;
    const double g = weights.g;
    const double r = weights.r;
    for (std::uint8_t* p = pixels; count > 0; --count, p += 4) {
        if (p[3] == 0) continue;
        const long gray = std::lrint(p[0] * b + p[1] * g + p[2] * r);
        p[0] = p[1] = p[2] = static_cast<std::uint8_t>(gray);
    }
}

void adjustLightness(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const Tone& tone) {
    for (; count > 0; --count, dst += 4, src += 4) {
        const std::uint8_t alpha = src[3];
        const int highest = tone.lightens ? alpha : 255;
        for (int channel = 0; channel < 3; ++channel) {
            const int colour = src[channel];
            dst[channel] = static_cast<std::uint8_t>(
                alpha == 0 ? colour : std::max(0, std::min(colour + tone.adjust[alpha], highest)));
        }
        dst[3] = alpha;
    }
}

void blendToColour(std::uint8_t* pixels, std::size_t count, const std::uint8_t* blendColour, std::uint32_t opacity) {
    for (std::uint8_t* p = pixels; count > 0; --count, p += 4) {
        const std::uint32_t alpha = p[3];
        if (alpha == 0) continue;
        for (int channel = 0; channel < 3; ++channel) {
            const std::uint32_t mixed = p[channel] * (100 - opacity) + blendColour[channel] * opacity;
            p[channel] = static_cast<std::uint8_t>(mixed * alpha / 25500);
        }
    }
}

std::size_t replacePixel(std::uint8_t* pixels, std::size_t count, const std::uint8_t* from, const std::uint8_t* to) {
    std::size_t replaced = 0;
    for (std::uint8_t* p = pixels; count > 0; --count, p += 4) {
        if (std::memcmp(p, from, 4) != 0) continue;
        std::memcpy(p, to, 4);
        ++replaced;
    }
    return replaced;
}

std::uint8_t flattened(std::uint8_t colour, unsigned alpha, std::uint8_t fill) {
    if (alpha == 0) return fill; // whatever colour a clear pixel holds
    return static_cast<std::uint8_t>(std::min(fill * (255 - alpha) / 255 + colour, 255U));
}

void flatten24(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* fill) {
    for (; count > 0; --count, dst += 3, src += 4) {
        for (int channel = 0; channel < 3; ++channel)
            dst[channel] = flattened(src[channel], src[3], fill[channel]);
    }
}

void flatten32(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* fill) {
    for (; count > 0; --count, dst += 4, src += 4) {
        for (int channel = 0; channel < 3; ++channel)
            dst[channel] = flattened(src[channel], src[3], fill[channel]);
        dst[3] = 255;
    }
}

void mirror(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        std::memcpy(dst + 4 * i, src + 4 * (count - 1 - i), 4);
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
