// Kernels for NEON alone, whose loads sort sixteen pixels by channels: each channel is a vector, and the alpha is there
// for all of them without a shuffle.
#pragma once
#include "kernels/simd/alpha.h"
#include "kernels/simd/neon.h"

namespace pixkit::kernels {
namespace {

// (1 + product) * 257 / 65,536, which is the product / 255 truncated: the 257 times are a sum with the 256th part.
inline uint8x8_t over255(uint16x8_t oneMore) {
    return vaddhn_u16(oneMore, vshrq_n_u16(oneMore, 8));
}
inline Vec premultipliedBytes(Vec colour, Vec alpha) {
    const uint16x8_t one = vdupq_n_u16(1);
    const uint8x8_t low = over255(vmlal_u8(one, vget_low_u8(colour), vget_low_u8(alpha)));
    return vcombine_u8(low, over255(vmlal_high_u8(one, colour, alpha)));
}

bool copyPremultiplyingPlanes(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    Vec partial = zeros();
    for (; count >= 16; count -= 16, dst += 64, src += 64) {
        uint8x16x4_t planes = vld4q_u8(src);
        const Vec alpha = planes.val[3];
        partial = bitOr(partial, vcgtq_u8(add8(alpha, all8(1)), all8(1))); // 0 and 1 for opaque and clear pixels
        for (int channel = 0; channel < 3; ++channel)
            planes.val[channel] = premultipliedBytes(planes.val[channel], alpha);
        vst4q_u8(dst, planes);
    }
    return copyPremultiplying(dst, src, count) || !allZero(partial);
}

bool premultiplyPlanes(std::uint8_t* pixels, std::size_t count) {
    return copyPremultiplyingPlanes(pixels, pixels, count);
}

inline void usePlanes(Table& table) {
    table.copyPremultiplying = copyPremultiplyingPlanes;
    table.premultiply = premultiplyPlanes;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
