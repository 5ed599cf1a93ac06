// Vector kernels that turn PNG samples into premultiplied pixels.
#pragma once
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

// The high bytes (the first ones, 16-bit samples being big-endian) of the samples in two vectors.
Vec highBytes(const std::uint8_t* src) {
    return packedInOrder(packUnsigned16(bitAnd(load(src), all16(0xFF)), bitAnd(load(src + vecBytes), all16(0xFF))));
}

// Two vectors of pixels from words that hold their B, G and their R, A.
void storePixels(std::uint8_t* dst, Vec blueGreen, Vec redAlpha) {
    storeInterleaved(dst, interleaveLow16(blueGreen, redAlpha), interleaveHigh16(blueGreen, redAlpha));
}

// Two vectors of pixels from one of gray, alpha pairs.
void storeGrayAlpha(std::uint8_t* dst, Vec pairs) {
    const Vec gray = bitAnd(pairs, all16(0xFF));
    const Vec alpha = shiftRight16<8>(pairs);
    const Vec colour = dividedBy255(multiplyLow16(gray, alpha));
    storePixels(dst, bitOr(colour, shiftLeft16<8>(colour)), bitOr(colour, shiftLeft16<8>(alpha)));
}

void fromRgb8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; 3 * count >= expand3Reads; count -= vecPixels, dst += vecBytes, src += 3 * vecPixels)
        store(dst, bitOr(redBlueSwapped(expanded3(src)), all32(alphaByte)));
    reference.fromRgb8(dst, src, count);
}

void fromRgba8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += vecBytes)
        store(dst, premultiplied(redBlueSwapped(load(src))));
    reference.fromRgba8(dst, src, count);
}

void fromGrayAlpha8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= 2 * vecPixels; count -= 2 * vecPixels, dst += 2 * vecBytes, src += vecBytes)
        storeGrayAlpha(dst, load(src));
    reference.fromGrayAlpha8(dst, src, count);
}

// Four looked-up pixels for one store. A gather instruction takes half as long again.
void fromIndex8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* lut) {
    for (; count >= 4; count -= 4, dst += 16, src += 4)
        store128(dst, fourPixels([&](std::size_t i) { return lut + std::size_t{4} * src[i]; }));
    reference.fromIndex8(dst, src, count, lut);
}

void fromGray16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= 2 * vecPixels; count -= 2 * vecPixels, dst += 2 * vecBytes, src += vecBytes) {
        const Vec gray = bitAnd(load(src), all16(0xFF));
        storePixels(dst, bitOr(gray, shiftLeft16<8>(gray)), bitOr(gray, all16(0xFF00)));
    }
    reference.fromGray16(dst, src, count);
}

// The first four pixels of three samples in 24 bytes, as lanes of R, G, B, 0.
Vec128 highBytes3(const std::uint8_t* src) {
    const Vec128 mask = all16In128(0xFF);
    return spread3(packUnsigned16(bitAnd(load128(src), mask), bitAnd(load64(src + 16), mask)));
}

void fromRgb16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += 6 * vecPixels) {
        const Vec rgb = fromParts([src](std::size_t part) { return highBytes3(src + 24 * part); });
        store(dst, bitOr(redBlueSwapped(rgb), all32(alphaByte)));
    }
    reference.fromRgb16(dst, src, count);
}

void fromRgba16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += 2 * vecBytes)
        store(dst, premultiplied(redBlueSwapped(highBytes(src))));
    reference.fromRgba16(dst, src, count);
}

void fromGrayAlpha16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= 2 * vecPixels; count -= 2 * vecPixels, dst += 2 * vecBytes, src += 2 * vecBytes)
        storeGrayAlpha(dst, highBytes(src));
    reference.fromGrayAlpha16(dst, src, count);
}

// --- small samples: each byte of samples of 2 * depth bits becomes two, until they are single
template <int depth>
Vec128 halves(Vec128 v, bool last) {
    const Vec128 mask = all8In128((1U << depth) - 1);
    const Vec128 first = bitAnd(shiftRight16<depth>(v), mask);
    const Vec128 second = bitAnd(v, mask);
    return last ? interleaveHigh8(first, second) : interleaveLow8(first, second);
}

template <int depth, int held = 8>
void storeSamples(std::uint8_t* dst, Vec128 v) {
    if constexpr (held == depth) {
        store128(dst, v);
    } else {
        storeSamples<depth, held / 2>(dst, halves<held / 2>(v, false));
        storeSamples<depth, held / 2>(dst + 16 * (held / 2 / depth), halves<held / 2>(v, true));
    }
}

template <int depth>
void unpackAs(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    constexpr std::size_t perBlock = 16 * 8 / depth;
    for (; count >= perBlock; count -= perBlock, dst += perBlock, src += 16)
        storeSamples<depth>(dst, load128(src));
    reference.unpackSamples(dst, src, count, depth);
}

void unpackSamples(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, unsigned depth) {
    switch (depth) {
    case 1:
        return unpackAs<1>(dst, src, count);
    case 2:
        return unpackAs<2>(dst, src, count);
    default:
        return unpackAs<4>(dst, src, count);
    }
}

inline void useSamples(Table& table) {
    table.fromRgb8 = fromRgb8;
    table.fromRgba8 = fromRgba8;
    table.fromGrayAlpha8 = fromGrayAlpha8;
    table.fromIndex8 = fromIndex8;
    table.fromGray16 = fromGray16;
    table.fromRgb16 = fromRgb16;
    table.fromRgba16 = fromRgba16;
    table.fromGrayAlpha16 = fromGrayAlpha16;
    table.unpackSamples = unpackSamples;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
