// What several kernels are made of, in the words of a vector layer (simd/sse2.h).
#pragma once
#include "kernels/reference.h"

namespace pixkit::kernels {
namespace {

constexpr std::size_t vecPixels = vecBytes / 4;
constexpr std::size_t vecParts = vecBytes / 16;

constexpr unsigned alphaByte = 0xFF000000U;
constexpr unsigned colourBytes = 0x00FFFFFFU;
constexpr std::uint64_t alphaWord = 0x00FF'0000'0000'0000U;

// The sums of all lanes.
inline std::size_t laneSum32(Vec a) {
    std::uint32_t lanes[vecBytes / 4];
    std::memcpy(lanes, &a, sizeof lanes);
    std::size_t sum = 0;
    for (const std::uint32_t lane : lanes)
        sum += lane;
    return sum;
}
inline std::uint64_t laneSum64(Vec a) {
    std::uint64_t lanes[vecBytes / 8];
    std::memcpy(lanes, &a, sizeof lanes);
    std::uint64_t sum = 0;
    for (const std::uint64_t lane : lanes)
        sum += lane;
    return sum;
}

// x / 255 truncated, for words below 65,535: (x + 1) * 257 / 65,536 is that for each of them.
inline Vec dividedBy255(Vec x) {
    return multiplyHigh16(add16(x, all16(1)), all16(257));
}

// colour * alpha / 255 truncated. The alpha word is multiplied by 255 and so stays as it is.
inline Vec premultipliedWords(Vec words) {
    return dividedBy255(multiplyLow16(words, bitOr(alphaInAllWords(words), all64(alphaWord))));
}
inline Vec premultiplied(Vec pixels) {
    return packUnsigned16(premultipliedWords(widenLow8(pixels)), premultipliedWords(widenHigh8(pixels)));
}

// One vector of pixels from three bytes each; the fourth byte is 0. Reads `expand3Reads` bytes.
constexpr std::size_t expand3Reads = 12 * (vecParts - 1) + 16;
inline Vec expanded3(const std::uint8_t* src) {
    return spread3(fromParts([src](std::size_t part) { return load128(src + 12 * part); }));
}

// Four pixels in 16 bytes, pixel i from pixelAt(i).
template <class PixelAt>
inline Vec128 fourPixels(PixelAt pixelAt) {
    const Vec128 first = interleaveLow32(load32(pixelAt(0)), load32(pixelAt(1)));
    const Vec128 second = interleaveLow32(load32(pixelAt(2)), load32(pixelAt(3)));
    return interleaveLow64(first, second);
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
