// Weighted sums of the colours, exact in integers, for what makes gray (gray.h, gray_dots.h).
#pragma once
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

// A single-precision weight from 1/16 on is a whole number of 1/2^27, and so are many smaller ones. In these units the
// weighted sum is exact in integers: a weight is high * 2^13 + low, both of which fit the signed words that
// multiplyAddPairs16 takes, and the two sums of products are joined at the end.
struct GrayWords {
    Vec blueRedHigh, blueRedLow;       // for the word pair B, R
    Vec greenAlphaHigh, greenAlphaLow; // for the word pair G, A; alpha weighs nothing
    Vec blueRed, half, belowShift, belowLow, one;
};

// The weight in units of 1/2^27, or -1 where that is not whole or not below 1.
inline std::int32_t weightUnits(float weight) {
    if (!(weight >= 0.0F && weight < 1.0F)) return -1;
    const float units = weight * 0x1p27F; // exact: only the exponent changes
    const std::int32_t whole = static_cast<std::int32_t>(units);
    return static_cast<float>(whole) == units ? whole : -1;
}

constexpr int lowBits = 13;
constexpr unsigned lowMask = (1U << lowBits) - 1;

inline Vec wordPairs(std::uint32_t low, std::uint32_t high) {
    return all32(low | high << 16);
}

inline bool prepareGray(const GrayWeights& weights, GrayWords& words) {
    const std::int32_t r = weightUnits(weights.r);
    const std::int32_t g = weightUnits(weights.g);
    const std::int32_t b = weightUnits(weights.b);
    if (r < 0 || g < 0 || b < 0) return false;
    const auto high = [](std::int32_t units) { return static_cast<std::uint32_t>(units) >> lowBits; };
    const auto low = [](std::int32_t units) { return static_cast<std::uint32_t>(units) & lowMask; };
    words = {.blueRedHigh = wordPairs(high(b), high(r)),
             .blueRedLow = wordPairs(low(b), low(r)),
             .greenAlphaHigh = wordPairs(high(g), 0),
             .greenAlphaLow = wordPairs(low(g), 0),
             .blueRed = keptConstant(all32(0x00FF00FF)),
             .half = keptConstant(all32(1U << 13)),
             .belowShift = keptConstant(all32((1U << 14) - 1)),
             .belowLow = keptConstant(all32(lowMask)),
             .one = keptConstant(all32(1))};
    return true;
}

// The weighted sum of each lane, with 1/2 added, in units of 1/2^14, and what is left of it below them in 1/2^27.
struct GraySums {
    Vec sum, low;
};
inline GraySums graySums(Vec pixels, const GrayWords& words) {
    const Vec blueRed = bitAnd(pixels, words.blueRed);
    const Vec greenAlpha = shiftRight16<8>(pixels);
    const Vec low =
        add32(multiplyAddPairs16(blueRed, words.blueRedLow), multiplyAddPairs16(greenAlpha, words.greenAlphaLow));
    const Vec high =
        add32(multiplyAddPairs16(blueRed, words.blueRedHigh), multiplyAddPairs16(greenAlpha, words.greenAlphaHigh));
    return {add32(add32(high, words.half), shiftRight32<lowBits>(low)), low};
}

// In each lane the gray in the low byte, ties rounded to even; what is above it is unspecified.
inline Vec exactGray(Vec pixels, const GrayWords& words) {
    const GraySums sums = graySums(pixels, words);
    // A tie has no bits left below the shift; then the result is made even. Shifts are dear: masks instead.
    const Vec tie = equal32(bitOr(bitAnd(sums.sum, words.belowShift), bitAnd(sums.low, words.belowLow)), zeros());
    return andNot(shiftRight32<14>(sums.sum), bitAnd(tie, words.one));
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
