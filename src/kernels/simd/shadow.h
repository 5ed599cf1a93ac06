// Vector kernels for box-blurred shadows.
#pragma once
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

// The alphas of 2 * vecPixels pixels as words, in the order of what was packed.
Vec alphaWords(const std::uint8_t* pixels) {
    return packSigned32(shiftRight32<24>(load(pixels)), shiftRight32<24>(load(pixels + vecBytes)));
}

void slideAlphaSums(std::uint16_t* sums, const std::uint8_t* entering, const std::uint8_t* leaving, std::size_t count) {
    constexpr std::size_t step = 2 * vecPixels;
    for (; count >= step; count -= step, sums += step) {
        const Vec enters = entering != nullptr ? alphaWords(entering) : zeros();
        const Vec leaves = leaving != nullptr ? alphaWords(leaving) : zeros();
        auto* const at = reinterpret_cast<std::uint8_t*>(sums);
        store(at, add16(load(at), packedInOrder(subtract16(enters, leaves))));
        if (entering != nullptr) entering += 4 * step;
        if (leaving != nullptr) leaving += 4 * step;
    }
    reference.slideAlphaSums(sums, entering, leaving, count);
}

// By how much vecPixels tallies differ from the one before each.
Vec tallySteps(const std::uint16_t* sums, std::size_t window) {
    const auto* const leaving = reinterpret_cast<const std::uint8_t*>(sums);
    const auto* const entering = reinterpret_cast<const std::uint8_t*>(sums + window);
    return widenSigned16(subtract16(loadHalf(entering), loadHalf(leaving)));
}

// The shades are multiplied anew, because fetching them from the table one by one takes longer.
void shadeBoxes(std::uint8_t* dst, const std::uint16_t* sums, std::size_t count, std::size_t window,
                const std::uint8_t* shades) {
    const unsigned blue = shades[4 * 255];
    const unsigned green = shades[4 * 255 + 1];
    const unsigned red = shades[4 * 255 + 2];
    const Vec blueRed = all32(blue | red << 16);
    const Vec greenAlpha = all32(green | 255U << 16);
    // Half a unit more than the tally keeps every quotient at least 1 / 882 away from a whole number, and single
    // precision errs by less than 1 / 30,000: truncated, the quotient is exact.
    const VecFloat half = allFloat(0.5F);
    const VecFloat reciprocal = allFloat(1.0F / static_cast<float>(window * window));
    unsigned firstTally = 0;
    for (std::size_t i = 0; i < window; ++i)
        firstTally += sums[i];
    Vec tally = all32(firstTally);
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, sums += vecPixels) {
        const Vec steps = runningSums32(tallySteps(sums, window));
        const Vec tallies = add32(tally, steps);
        tally = add32(tally, lastInAll32(steps));
        const Vec average = truncated(multiply(add(toFloat(tallies), half), reciprocal));
        const Vec averages = bitOr(average, shiftLeft32<16>(average));
        const Vec outer = dividedBy255(multiplyLow16(averages, blueRed));
        const Vec inner = dividedBy255(multiplyLow16(averages, greenAlpha));
        store(dst, bitOr(outer, shiftLeft16<8>(inner)));
    }
    reference.shadeBoxes(dst, sums, count, window, shades);
}

inline void useShadow(Table& table) {
    table.slideAlphaSums = slideAlphaSums;
    table.shadeBoxes = shadeBoxes;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
