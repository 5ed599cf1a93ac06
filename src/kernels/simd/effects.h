// Vector kernels for the effects. The unit has included a GrayMaker before.
#pragma once
#include "kernels/simd/light.h"

namespace pixkit::kernels {
namespace {

void invert(std::uint8_t* pixels, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, pixels += vecBytes) {
        const Vec v = load(pixels);
        const Vec alpha = alphaInAll(v);
        const Vec inverted = subtractSaturated8(alpha, bitAnd(v, all32(colourBytes)));
        store(pixels, bitOr(inverted, bitAnd(v, equal8(alpha, zeros())))); // inverted is 0 where alpha is
    }
    reference.invert(pixels, count);
}

// --- grayscale
void grayscale(std::uint8_t* pixels, std::size_t count, const GrayWeights& weights) {
    GrayMaker gray;
    if (gray.prepare(weights)) {
        for (; count >= vecPixels; count -= vecPixels, pixels += vecBytes) {
            const Vec v = load(pixels);
            store(pixels, whereClear(v, bitAnd(v, all32(alphaByte)), v, gray(v)));
        }
    }
    reference.grayscale(pixels, count, weights);
}

// --- lightness
// Whole vectors; returns how many pixels these were.
template <class Light>
std::size_t adjustVectors(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const Light& light) {
    const std::size_t whole = count - count % vecPixels;
    for (std::size_t i = 0; i < 4 * whole; i += vecBytes) {
        const Vec v = load(src + i);
        const Vec alpha = alphaInAll(v);
        store(dst + i, whereClear(v, alpha, v, light(v, alpha)));
    }
    return whole;
}

void adjustLightness(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const Tone& tone) {
    std::size_t done = 0;
    if (tone.isLinear && tone.lightens)
        done = adjustVectors(dst, src, count, Lighter{Adjustment(tone)});
    else if (tone.isLinear)
        done = adjustVectors(dst, src, count, Darker{Adjustment(tone)});
    reference.adjustLightness(dst + 4 * done, src + 4 * done, count - done, tone);
}

// --- blend
// mixed * alpha / 25500 truncated, for mixed up to 25500. `share` is a little less than alpha * 65536 / 25500, so the
// first estimate is right or one too small, and the remainder, below 2 * 25500, tells which.
Vec blendedWords(Vec words, Vec keep, Vec added) {
    const Vec alpha = alphaInAllWords(words);
    const Vec mixed = add16(multiplyLow16(words, keep), added);
    const Vec share = multiplyHigh16(shiftLeft16<8>(alpha), all16(657));
    const Vec estimate = multiplyHigh16(mixed, share);
    const Vec remainder = subtract16(multiplyLow16(mixed, alpha), multiplyLow16(estimate, all16(25500)));
    const Vec oneMore = greaterSigned16(bitXor(remainder, all16(0x8000)), all16((25500 - 1) ^ 0x8000));
    return subtract16(estimate, oneMore);
}

// The bytes that stay as they are: alpha, and all of a clear pixel.
Vec keptBytes(Vec pixels) {
    return bitOr(equal32(bitAnd(pixels, all32(alphaByte)), zeros()), all32(alphaByte));
}

void blendToColour(std::uint8_t* pixels, std::size_t count, const std::uint8_t* blendColour, std::uint32_t opacity) {
    const std::uint64_t blue = blendColour[0] * opacity;
    const std::uint64_t green = blendColour[1] * opacity;
    const std::uint64_t red = blendColour[2] * opacity;
    const Vec keep = all16(100 - opacity);
    const Vec added = all64(blue | green << 16 | red << 32);
    for (; count >= vecPixels; count -= vecPixels, pixels += vecBytes) {
        const Vec v = load(pixels);
        const Vec blended =
            packUnsigned16(blendedWords(widenLow8(v), keep, added), blendedWords(widenHigh8(v), keep, added));
        store(pixels, select(keptBytes(v), v, blended));
    }
    reference.blendToColour(pixels, count, blendColour, opacity);
}

std::size_t replacePixel(std::uint8_t* pixels, std::size_t count, const std::uint8_t* from, const std::uint8_t* to) {
    const Vec wanted = repeatedParts(repeated32<0>(load32(from)));
    const Vec replacement = repeatedParts(repeated32<0>(load32(to)));
    Vec replaced = zeros();
    for (; count >= vecPixels; count -= vecPixels, pixels += vecBytes) {
        const Vec v = load(pixels);
        const Vec match = equal32(v, wanted);
        replaced = subtract32(replaced, match);
        store(pixels, select(match, replacement, v));
    }
    return laneSum32(replaced) + reference.replacePixel(pixels, count, from, to);
}

// --- flatten
Vec flattened(Vec pixels, Vec fillWords, Vec fillPixels) {
    const Vec alpha = alphaInAll(pixels);
    const Vec rest = bitXor(alpha, all8(255));
    const Vec under = packUnsigned16(dividedBy255(multiplyLow16(widenLow8(rest), fillWords)),
                                     dividedBy255(multiplyLow16(widenHigh8(rest), fillWords)));
    const Vec clear = equal8(alpha, zeros());
    return select(clear, fillPixels, addSaturated8(under, pixels));
}

struct Fill {
    Vec words, pixels;
};

Fill fillOf(const std::uint8_t* fill) {
    const std::uint32_t pixel = fill[0] | std::uint32_t{fill[1]} << 8 | std::uint32_t{fill[2]} << 16;
    const Vec pixels = all32(pixel | alphaByte);
    return {widenLow8(pixels), pixels};
}

void flatten24(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* fill) {
    const Fill under = fillOf(fill);
    // Whole vectors are stored; the bytes behind their pixels belong to the next pixels, which follow.
    for (; 3 * count >= vecBytes; count -= vecPixels, dst += 3 * vecPixels, src += vecBytes)
        store(dst, packed3(flattened(load(src), under.words, under.pixels)));
    reference.flatten24(dst, src, count, fill);
}

void flatten32(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* fill) {
    const Fill under = fillOf(fill);
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += vecBytes)
        store(dst, bitOr(flattened(load(src), under.words, under.pixels), all32(alphaByte)));
    reference.flatten32(dst, src, count, fill);
}

void mirror(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes)
        store(dst, reversed32(load(src + 4 * (count - vecPixels))));
    reference.mirror(dst, src, count);
}

inline void useEffects(Table& table) {
    table.invert = invert;
    table.grayscale = grayscale;
    table.adjustLightness = adjustLightness;
    table.blendToColour = blendToColour;
    table.replacePixel = replacePixel;
    table.flatten24 = flatten24;
    table.flatten32 = flatten32;
    table.mirror = mirror;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
