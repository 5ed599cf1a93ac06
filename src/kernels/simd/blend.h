// Vector kernels for drawing one picture over another. The unit has included a GrayMaker before.
//
// Bytes are multiplied in words, the even ones of a vector and the odd ones apart: each word of a pixel wants the same
// factor, and nothing has to be widened and packed again.
#pragma once
#include "kernels/simd/light.h"

namespace pixkit::kernels {
namespace {

// Draws pixels, and changes nothing where they are clear, whatever colour they hold. Constants are kept at hand.
struct Over {
    Vec evenBytes = keptConstant(all16(0xFF));
    Vec one = keptConstant(all8(1));

    // `pixels` are changed from those that `source` was; alpha, which did not change, is at hand in all bytes.
    Vec operator()(Vec under, Vec source, Vec pixels, Vec alpha) const {
        return whereClear(source, alpha, under, addSaturated8(leftUnder(under, alpha), pixels));
    }
    // What is left of each byte under an alpha, which stands in all bytes of its pixel: byte * (255 - alpha) / 255
    // truncated, which is the byte without byte * alpha / 255 rounded up. That is one more than the high half of the
    // byte's product with alpha * 257, the word that two bytes of alpha are, unless it is 0: then either the byte is 0
    // and stays so, or alpha is, which this is not for.
    Vec leftUnder(Vec under, Vec alpha) const {
        const Vec even = multiplyHigh16(bitAnd(under, evenBytes), alpha);
        const Vec odd = multiplyHigh16(andNot(under, evenBytes), alpha); // in the high byte
        return subtractSaturated8(under, add8(select(evenBytes, even, odd), one));
    }
};

// The same scaled by an opacity. What is to be divided by 255 gets 255 more, and one for the division, (x + 1) * 257 /
// 65,536: the largest sum, 65,535, then gives 255 as it should when the 1 too much is taken off again. So do sums that
// end there because colour is above its alpha.
struct ScaledOver {
    explicit ScaledOver(std::uint8_t globalAlpha) : scale(keptConstant(all16(globalAlpha))) {}

    Vec scale;
    Vec evenBytes = keptConstant(all16(0xFF));
    Vec more = keptConstant(all16(256));
    Vec by257 = keptConstant(all16(257));
    Vec one = keptConstant(all8(1));

    Vec operator()(Vec under, Vec source, Vec changed, Vec alpha) const {
        const Vec pixels = whereClear(source, alpha, zeros(), changed);
        const Vec even = add16(multiplyLow16(bitAnd(pixels, evenBytes), scale), more);
        const Vec odd = add16(multiplyLow16(shiftRight16<8>(pixels), scale), more);
        const Vec rest = subtract16(more, multiplyHigh16(upperWordInBoth(odd), by257));
        const Vec evenSum = addSaturated16(multiplyLow16(bitAnd(under, evenBytes), rest), even);
        const Vec oddSum = addSaturated16(multiplyLow16(shiftRight16<8>(under), rest), odd);
        const Vec evenMore = multiplyHigh16(evenSum, by257);
        const Vec oddMore = shiftLeft16<8>(multiplyHigh16(oddSum, by257));
        return subtract8(select(evenBytes, evenMore, oddMore), one);
    }
};

// Changes nothing.
struct Plain {
    Vec operator()(Vec pixels, Vec) const { return pixels; }
};

template <class Light>
struct Grayed {
    Light light;
    const GrayMaker& gray;
    Vec operator()(Vec pixels, Vec alpha) const { return gray(light(pixels, alpha)); }
};

// Draws whole vectors and returns how many pixels these were. At full opacity opaque pixels replace what is there.
// Fetching ahead takes a twentieth longer where everything is in the cache, and makes drawings of 4096 x 4096 pixels,
// whose clear stretches are left out, two thirds faster.
template <bool atFullOpacity, bool fetchesAhead, class Draw, class Change>
std::size_t blendVectors(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const Draw& draw,
                         const Change& change) {
    const Vec alphaBytes = keptConstant(all32(alphaByte));
    const std::size_t whole = count - count % vecPixels;
    for (std::size_t i = 0; i < 4 * whole; i += vecBytes) {
        const Vec v = load(src + i);
        if (atFullOpacity && allSet(v, alphaBytes)) {
            store(dst + i, change(v, all8(255)));
        } else if (!noneSet(v, alphaBytes)) {
            const Vec alpha = alphaInAll(v);
            if constexpr (fetchesAhead) __builtin_prefetch(dst + i + 1024, 1);
            store(dst + i, draw(load(dst + i), v, change(v, alpha), alpha));
        }
    }
    return whole;
}

template <class Change>
std::size_t blendChanged(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha,
                         const Change& change) {
    return globalAlpha == 255 ? blendVectors<true, false>(dst, src, count, Over(), change)
                              : blendVectors<false, false>(dst, src, count, ScaledOver(globalAlpha), change);
}

// As they are. Long rows are of pictures that may not be in the cache.
template <bool atFullOpacity, class Draw>
std::size_t blendPlain(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const Draw& draw) {
    constexpr std::size_t longRow = 1024;
    return count < longRow ? blendVectors<atFullOpacity, false>(dst, src, count, draw, Plain())
                           : blendVectors<atFullOpacity, true>(dst, src, count, draw, Plain());
}

void blendOver(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    const std::size_t done = blendPlain<true>(dst, src, count, Over());
    reference.blendOver(dst + 4 * done, src + 4 * done, count - done);
}

void blendScaled(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha) {
    const std::size_t done = blendPlain<false>(dst, src, count, ScaledOver(globalAlpha));
    reference.blendScaled(dst + 4 * done, src + 4 * done, count - done, globalAlpha);
}

template <class Light>
std::size_t blendLit(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha,
                     const Tone& tone, const Light& light) {
    if (!tone.isGray) return blendChanged(dst, src, count, globalAlpha, light);
    GrayMaker gray;
    if (!gray.prepare(tone.weights)) return 0;
    return blendChanged(dst, src, count, globalAlpha, Grayed<Light>{light, gray});
}

void blendToned(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha,
                const Tone& tone) {
    std::size_t done = 0;
    if (!tone.isLight)
        done = blendLit(dst, src, count, globalAlpha, tone, Plain());
    else if (tone.isLinear && tone.lightens)
        done = blendLit(dst, src, count, globalAlpha, tone, Lighter{Adjustment(tone)});
    else if (tone.isLinear)
        done = blendLit(dst, src, count, globalAlpha, tone, Darker{Adjustment(tone)});
    reference.blendToned(dst + 4 * done, src + 4 * done, count - done, globalAlpha, tone);
}

inline void useBlend(Table& table) {
    table.blendOver = blendOver;
    table.blendScaled = blendScaled;
    table.blendToned = blendToned;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
