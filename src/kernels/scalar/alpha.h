// Reference kernels for the alpha channel.
#pragma once
#include "kernels/reference.h"
#include <algorithm>
#include <cstring>

namespace pixkit::kernels {
namespace {

bool scanAlpha(const std::uint8_t* pixels, std::size_t count, AlphaScan& scan) {
    for (const std::uint8_t* p = pixels; count > 0; --count, p += 4) {
        const std::uint8_t alpha = p[3];
        if (alpha == 0) {
            if (scan.state == AlphaScan::consistent && (p[0] | p[1] | p[2]) != 0) scan.state = AlphaScan::colourInClear;
            ++scan.zeroCount;
            continue;
        }
        const bool overAlpha = p[0] > alpha || p[1] > alpha || p[2] > alpha;
        if (scan.state != AlphaScan::consistent || overAlpha) {
            scan.state = AlphaScan::notPremultiplied;
            return false;
        }
        if (alpha == 255)
            ++scan.opaqueCount;
        else
            scan.partial = true;
    }
    return true;
}

bool copyScanningAlpha(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, AlphaScan& scan) {
    if (count > 0) std::memcpy(dst, src, count * 4);
    return scanAlpha(src, count, scan);
}

void setOpaque(std::uint8_t* pixels, std::size_t count) {
    for (std::uint8_t* p = pixels; count > 0; --count, p += 4)
        p[3] = 255;
}

bool copyPremultiplying(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    bool partial = false;
    for (; count > 0; --count, dst += 4, src += 4) {
        const unsigned alpha = src[3];
        for (int channel = 0; channel < 3; ++channel)
            dst[channel] = static_cast<std::uint8_t>(src[channel] * alpha / 255);
        dst[3] = static_cast<std::uint8_t>(alpha);
        partial = partial || alpha % 255 != 0;
    }
    return partial;
}

bool premultiply(std::uint8_t* pixels, std::size_t count) {
    return copyPremultiplying(pixels, pixels, count);
}

void unpremultiply(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count > 0; --count, dst += 4, src += 4) {
        const unsigned alpha = src[3];
        for (int channel = 0; channel < 3; ++channel) {
            const unsigned colour = src[channel];
            // Damaged data may hold colour above alpha: the quotient then keeps its low 8 bits.
            dst[channel] = static_cast<std::uint8_t>(alpha == 0 ? colour : colour * 255 / alpha);
        }
        dst[3] = static_cast<std::uint8_t>(alpha);
    }
}

void straighten(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count > 0; --count, dst += 4, src += 4) {
        const unsigned alpha = src[3];
        for (int channel = 0; channel < 3; ++channel) {
            const unsigned colour = std::min<unsigned>(src[channel], alpha);
            dst[channel] = static_cast<std::uint8_t>(alpha == 0 ? 0 : (colour * 255 + alpha - 1) / alpha);
        }
        dst[3] = static_cast<std::uint8_t>(alpha);
    }
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
