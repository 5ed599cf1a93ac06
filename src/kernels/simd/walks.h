// Vector kernel for bilinear walks, for sets of 16-byte vectors. Two positions in a wider vector were tried and are
// slower than one in 16 bytes.
#pragma once
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

// The vectors hold the four channels of a pixel and of the next in its row as words.

// Weights of a pixel and of the next, as pairs of words, for positions with 32 bits behind the point.
inline Vec128 weightPairs(const std::uint32_t* fractions) {
    const Vec128 next = shiftRight32<24>(load128(reinterpret_cast<const std::uint8_t*>(fractions)));
    return add32(subtract32(shiftLeft32<16>(next), next), all32In128(256));
}

// The channels of one position as four numbers. Sums of 16 bits are kept in signed words, 32,768 below what they are.
inline Vec128 mixedChannels(const std::uint8_t* p, std::size_t stride, Vec128 columnWeights, Vec128 rowWeights) {
    const Vec128 row = widenLow8(load64(p));
    const Vec128 nextRow = widenLow8(load64(p + stride));
    const Vec128 offset = all32In128(32768);
    const Vec128 left = multiplyAddPairs16(interleaveLow16(row, nextRow), rowWeights);
    const Vec128 right = multiplyAddPairs16(interleaveHigh16(row, nextRow), rowWeights);
    const Vec128 sides = packSigned32(subtract32(left, offset), subtract32(right, offset));
    const Vec128 pairs = interleaveLow16(sides, interleaveHigh64(sides, sides));
    const Vec128 total = add32(multiplyAddPairs16(pairs, columnWeights), all32In128(32768 * 256));
    return shiftRight32<16>(total);
}

void walkBilinear(std::uint8_t* dst, const PixelWalk& from, std::size_t count) {
    PixelWalk walk = from;
    auto u = static_cast<std::uint64_t>(walk.u);
    auto v = static_cast<std::uint64_t>(walk.v);
    const auto du = static_cast<std::uint64_t>(walk.du);
    const auto dv = static_cast<std::uint64_t>(walk.dv);
    for (; count >= 4; count -= 4, dst += 16) {
        const std::uint8_t* p[4];
        std::uint32_t columns[4];
        std::uint32_t rows[4];
        for (int i = 0; i < 4; ++i, u += du, v += dv) {
            p[i] = walk.origin + (v >> 32) * walk.stride + (u >> 32) * 4;
            columns[i] = static_cast<std::uint32_t>(u);
            rows[i] = static_cast<std::uint32_t>(v);
        }
        const Vec128 x = weightPairs(columns);
        const Vec128 y = weightPairs(rows);
        const Vec128 first = mixedChannels(p[0], walk.stride, repeated32<0>(x), repeated32<0>(y));
        const Vec128 second = mixedChannels(p[1], walk.stride, repeated32<1>(x), repeated32<1>(y));
        const Vec128 third = mixedChannels(p[2], walk.stride, repeated32<2>(x), repeated32<2>(y));
        const Vec128 fourth = mixedChannels(p[3], walk.stride, repeated32<3>(x), repeated32<3>(y));
        store128(dst, packUnsigned16(packSigned32(first, second), packSigned32(third, fourth)));
    }
    walk.u = static_cast<std::int64_t>(u);
    walk.v = static_cast<std::int64_t>(v);
    reference.walkBilinear(dst, walk, count);
}

inline void useWalks(Table& table) {
    table.walkBilinear = walkBilinear;
}

} // namespace
} // namespace pixkit::kernels
