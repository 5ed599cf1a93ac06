// Vector kernels for the layouts of pixels in memory.
#pragma once
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

void swapRedBlue(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += vecBytes)
        store(dst, redBlueSwapped(load(src)));
    reference.swapRedBlue(dst, src, count);
}

template <bool swap>
void pack24As(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    // Whole vectors are stored; the bytes behind their pixels belong to the next pixels, which follow.
    for (; 3 * count >= vecBytes; count -= vecPixels, dst += 3 * vecPixels, src += vecBytes) {
        const Vec v = load(src);
        store(dst, packed3(swap ? redBlueSwapped(v) : v));
    }
    reference.pack24(dst, src, count, swap);
}

void pack24(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, bool swap) {
    swap ? pack24As<true>(dst, src, count) : pack24As<false>(dst, src, count);
}

template <bool swap>
void unpack24As(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; 3 * count >= expand3Reads; count -= vecPixels, dst += vecBytes, src += 3 * vecPixels) {
        const Vec v = expanded3(src);
        store(dst, bitOr(swap ? redBlueSwapped(v) : v, all32(alphaByte)));
    }
    reference.unpack24(dst, src, count, swap);
}

void unpack24(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, bool swap) {
    swap ? unpack24As<true>(dst, src, count) : unpack24As<false>(dst, src, count);
}

// The alpha bytes of four vectors of pixels in one.
Vec alphaBytes(const std::uint8_t* src) {
    Vec alpha[4];
    for (std::size_t i = 0; i < 4; ++i)
        alpha[i] = shiftRight32<24>(load(src + vecBytes * i));
    const Vec words01 = packSigned32(alpha[0], alpha[1]);
    const Vec words23 = packSigned32(alpha[2], alpha[3]);
    return packedTwiceInOrder(packUnsigned16(words01, words23));
}

void extractAlpha(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= vecBytes; count -= vecBytes, dst += vecBytes, src += 4 * vecBytes)
        store(dst, alphaBytes(src));
    reference.extractAlpha(dst, src, count);
}

void alphaBits(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t least) {
    const Vec limit = all8(least);
    for (; count >= vecBytes; count -= vecBytes, dst += vecBytes / 8, src += 4 * vecBytes) {
        const auto bits = byteMask(equal8(min8(alphaBytes(src), limit), limit));
        std::memcpy(dst, &bits, vecBytes / 8);
    }
    reference.alphaBits(dst, src, count, least);
}

inline void useLayouts(Table& table) {
    table.swapRedBlue = swapRedBlue;
    table.pack24 = pack24;
    table.unpack24 = unpack24;
    table.extractAlpha = extractAlpha;
    table.alphaBits = alphaBits;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
