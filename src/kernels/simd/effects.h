// Vector kernels for the effects.
#pragma once
#include "kernels/simd/gray.h"
#include "kernels/simd/pixels.h"

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
// The bytes that the effects leave as they are: alpha, and all of a clear pixel.
Vec keptBytes(Vec pixels) {
    return bitOr(equal32(bitAnd(pixels, all32(alphaByte)), zeros()), all32(alphaByte));
}

void grayscale(std::uint8_t* pixels, std::size_t count, const GrayWeights& weights) {
    GrayWords words;
    if (prepareGray(weights, words)) {
        for (; count >= vecPixels; count -= vecPixels, pixels += vecBytes) {
            const Vec v = load(pixels);
            store(pixels, select(keptBytes(v), v, lowInColours(grayed(v, words))));
        }
    }
    reference.grayscale(pixels, count, weights);
}

// --- lightness
// The adjustment of each pixel as a word in the low half of its lane.
Vec adjustments(const std::uint8_t* src, const std::int16_t* adjust) {
    std::int32_t lanes[vecPixels];
    for (std::size_t i = 0; i < vecPixels; ++i)
        lanes[i] = adjust[src[4 * i + 3]];
    Vec v;
    std::memcpy(&v, lanes, sizeof v);
    return v;
}

void adjustLightness(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::int16_t* adjust,
                     bool lighten) {
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += vecBytes) {
        const Vec v = load(src);
        const Vec lanes = adjustments(src, adjust);
        const Vec twice = bitOr(shiftLeft32<16>(lanes), bitAnd(lanes, all32(0xFFFF)));
        const Vec low = addSaturatedSigned16(widenLow8(v), interleaveLow32(twice, twice));
        const Vec high = addSaturatedSigned16(widenHigh8(v), interleaveHigh32(twice, twice));
        Vec adjusted = packUnsigned16(low, high); // held within 0 .. 255
        if (lighten) adjusted = min8(adjusted, alphaInAll(v));
        store(dst, select(keptBytes(v), v, adjusted));
    }
    reference.adjustLightness(dst, src, count, adjust, lighten);
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
