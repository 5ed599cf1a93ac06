// Reference kernels for the layouts of pixels in memory.
#pragma once
#include "kernels/reference.h"

namespace pixkit::kernels {
namespace {

void swapRedBlue(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count > 0; --count, dst += 4, src += 4) {
        const std::uint8_t first = src[0];
        const std::uint8_t third = src[2];
        dst[0] = third;
        dst[1] = src[1];
        dst[2] = first;
        dst[3] = src[3];
    }
}

void pack24(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, bool swap) {
    const int first = swap ? 2 : 0;
    for (; count > 0; --count, dst += 3, src += 4) {
        dst[0] = src[first];
        dst[1] = src[1];
        dst[2] = src[2 - first];
    }
}

void unpack24(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, bool swap) {
    const int first = swap ? 2 : 0;
    for (; count > 0; --count, dst += 4, src += 3) {
        dst[0] = src[first];
        dst[1] = src[1];
        dst[2] = src[2 - first];
        dst[3] = 255;
    }
}

void extractAlpha(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        dst[i] = src[4 * i + 3];
}

void alphaBits(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t least) {
    for (; count >= 8; count -= 8, src += 32) {
        unsigned bits = 0;
        for (unsigned i = 0; i < 8; ++i)
            bits |= (src[4 * i + 3] >= least ? 1U : 0U) << i;
        *dst++ = static_cast<std::uint8_t>(bits);
    }
    unsigned bits = 0;
    for (unsigned i = 0; i < count; ++i)
        bits |= (src[4 * i + 3] >= least ? 1U : 0U) << i;
    if (count > 0) *dst = static_cast<std::uint8_t>(bits);
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
