// Vector kernels for box-blurred shadows.
#pragma once
#include "kernels/scalar.h"
#include "kernels/simd.h"

namespace pixkit::kernels {
namespace {

// The alphas of 2 * vecPixels pixels as words, with 32-byte vectors in an order that inOrder mends.
Vec alphaWords(const std::uint8_t* pixels) {
    return PIXKIT_SIMD(packs_epi32)(right32<24>(load(pixels)), right32<24>(load(pixels + vecBytes)));
}

Vec inOrder(Vec packedWords) {
#ifdef __AVX2__
    return _mm256_permute4x64_epi64(packedWords, 0xD8);
#else
    return packedWords;
#endif
}

void slideAlphaSums(std::uint16_t* sums, const std::uint8_t* entering, const std::uint8_t* leaving, std::size_t count) {
    constexpr std::size_t step = 2 * vecPixels;
    for (; count >= step; count -= step, sums += step) {
        const Vec enters = entering != nullptr ? alphaWords(entering) : zeros();
        const Vec leaves = leaving != nullptr ? alphaWords(leaving) : zeros();
        auto* const at = reinterpret_cast<std::uint8_t*>(sums);
        store(at, add16(load(at), inOrder(subtract16(enters, leaves))));
        if (entering != nullptr) entering += 4 * step;
        if (leaving != nullptr) leaving += 4 * step;
    }
    scalar::slideAlphaSums(sums, entering, leaving, count);
}

// By how much vecPixels tallies differ from the one before each.
Vec tallySteps(const std::uint16_t* sums, std::size_t window) {
    const auto* const leaving = reinterpret_cast<const std::uint8_t*>(sums);
    const auto* const entering = reinterpret_cast<const std::uint8_t*>(sums + window);
#ifdef __AVX2__
    return _mm256_cvtepi16_epi32(_mm_sub_epi16(load128(entering), load128(leaving)));
#else
    const Vec steps = subtract16(load64(entering), load64(leaving));
    return _mm_srai_epi32(_mm_unpacklo_epi16(steps, steps), 16);
#endif
}

Vec runningSums32(Vec v) {
    v = add32(v, PIXKIT_SIMD_BITS(slli)(v, 4));
    v = add32(v, PIXKIT_SIMD_BITS(slli)(v, 8));
#ifdef __AVX2__
    const Vec halves = _mm256_shuffle_epi32(v, 0xFF);
    return add32(v, _mm256_permute2x128_si256(halves, halves, 0x08)); // the lower half's sum into the upper half
#else
    return v;
#endif
}

Vec lastInAll32(Vec v) {
#ifdef __AVX2__
    return _mm256_permutevar8x32_epi32(v, _mm256_set1_epi32(7));
#else
    return _mm_shuffle_epi32(v, 0xFF);
#endif
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
        const Vec average = truncated(multiply(PIXKIT_SIMD(add_ps)(toFloat(tallies), half), reciprocal));
        const Vec averages = either(average, left32<16>(average));
        const Vec outer = dividedBy255(multiplyLow16(averages, blueRed));
        const Vec inner = dividedBy255(multiplyLow16(averages, greenAlpha));
        store(dst, either(outer, left16<8>(inner)));
    }
    scalar::shadeBoxes(dst, sums, count, window, shades);
}

void useShadow(Table& table) noexcept {
    table.slideAlphaSums = slideAlphaSums;
    table.shadeBoxes = shadeBoxes;
}

} // namespace
} // namespace pixkit::kernels
