// Vector kernels for drawing one picture over another.
#pragma once
#include "kernels/simd/gray.h"
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

inline bool isClear(Vec pixels) {
    return noneSet(pixels, all32(alphaByte));
}
inline bool isOpaque(Vec pixels) {
    return allSet(pixels, all32(alphaByte));
}

// Clear pixels draw nothing, whatever colour they hold.
inline Vec withoutColourInClear(Vec pixels) {
    return andNot(pixels, equal32(bitAnd(pixels, all32(alphaByte)), zeros()));
}

// x / 255 truncated, 256 for what is 65,535 or was held there.
inline Vec dividedBy255Saturated(Vec x) {
    return multiplyHigh16(addSaturated16(x, all16(1)), all16(257));
}

// Draws over what is there, with its constants at hand.
struct Over {
    Vec one = keptConstant(all16(1));
    Vec by257 = keptConstant(all16(257));

    Vec operator()(Vec under, Vec pixels) const {
        const Vec rest = bitXor(alphaInAll(pixels), all8(255));
        const Vec kept = packUnsigned16(keptWords(widenLow8(under), widenLow8(rest)),
                                        keptWords(widenHigh8(under), widenHigh8(rest)));
        const Vec clear = equal8(rest, all8(255)); // clear pixels draw nothing, whatever colour they hold
        return addSaturated8(kept, andNot(pixels, clear));
    }
    // Divided by 255.
    Vec keptWords(Vec under, Vec rest) const { return multiplyHigh16(add16(multiplyLow16(under, rest), one), by257); }
};

// Of pixels widened to words. A word of 255 stays below 65,280 / 255 in valid pictures; what invalid ones exceed it by
// is held here and when the words become bytes.
inline Vec scaledOverWords(Vec under, Vec pixels, Vec globalAlpha) {
    const Vec scaled = multiplyLow16(pixels, globalAlpha);
    const Vec rest = subtract16(all16(255), dividedBy255(alphaInAllWords(scaled)));
    return dividedBy255Saturated(addSaturated16(multiplyLow16(under, rest), scaled));
}

// Changes nothing.
struct Plain {
    Vec operator()(Vec pixels) const { return pixels; }
};

// The magnitude of a lightness adjustment in the low byte of each lane.
struct LinearAdjustment {
    Vec scale, bias;
    Vec operator()(Vec pixels) const {
        return shiftRight32<24>(add32(multiplyLow32(shiftRight32<24>(pixels), scale), bias));
    }
};
struct TabledAdjustment {
    const std::int16_t* adjust;
    bool lightens;
    Vec operator()(Vec pixels) const {
        std::uint8_t bytes[vecBytes];
        store(bytes, pixels);
        std::int32_t lanes[vecPixels];
        for (std::size_t i = 0; i < vecPixels; ++i)
            lanes[i] = lightens ? adjust[bytes[4 * i + 3]] : -adjust[bytes[4 * i + 3]];
        Vec v;
        std::memcpy(&v, lanes, sizeof v);
        return v;
    }
};

template <class Adjustment>
struct Lighter {
    Adjustment adjustment;
    Vec operator()(Vec pixels) const {
        const Vec lit = addSaturated8(pixels, lowInColours(adjustment(pixels)));
        return min8(lit, alphaInAll(pixels));
    }
};
template <class Adjustment>
struct Darker {
    Adjustment adjustment;
    Vec operator()(Vec pixels) const { return subtractSaturated8(pixels, lowInColours(adjustment(pixels))); }
};

// The gray of each lane in its colours, the alpha as it is.
inline Vec withGray(Vec pixels, Vec gray) {
    return select(all32(alphaByte), pixels, lowInColours(gray));
}

// Makes whole vectors gray after `before` changed them. Ties are so rare that they are looked for once in a stretch,
// which is then made again.
template <class Before>
void makeGray(std::uint8_t* dst, const std::uint8_t* src, std::size_t bytes, const Before& before,
              const GrayWords& words) {
    TieWatch ties;
#pragma GCC unroll 2
    for (std::size_t i = 0; i < bytes; i += vecBytes) {
        const Vec pixels = before(load(src + i));
        store(dst + i, withGray(pixels, grayedTiesUp(pixels, words, ties)));
    }
    if (!ties.mayHaveSeenOne()) return;
    for (std::size_t i = 0; i < bytes; i += vecBytes) {
        const Vec pixels = before(load(src + i));
        store(dst + i, withGray(pixels, grayed(pixels, words)));
    }
}

// Both draw whole vectors and return how many pixels these were.
template <class Change>
std::size_t blendOverVectors(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, Change change) {
    const Over over;
    const std::size_t whole = count - count % vecPixels;
    for (std::size_t i = 0; i < 4 * whole; i += vecBytes) {
        const Vec v = load(src + i);
        if (isOpaque(v))
            store(dst + i, change(v));
        else if (!isClear(v))
            store(dst + i, over(load(dst + i), change(v)));
    }
    return whole;
}

template <class Change>
std::size_t blendScaledVectors(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha,
                               Change change) {
    const Vec scale = all16(globalAlpha);
    const std::size_t whole = count - count % vecPixels;
    for (std::size_t i = 0; i < 4 * whole; i += vecBytes) {
        const Vec v = load(src + i);
        if (isClear(v)) continue;
        const Vec visible = withoutColourInClear(change(v));
        const Vec under = load(dst + i);
        store(dst + i, packUnsigned16(scaledOverWords(widenLow8(under), widenLow8(visible), scale),
                                      scaledOverWords(widenHigh8(under), widenHigh8(visible), scale)));
    }
    return whole;
}

void blendOver(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    const std::size_t done = blendOverVectors(dst, src, count, Plain());
    reference.blendOver(dst + 4 * done, src + 4 * done, count - done);
}

void blendScaled(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha) {
    const std::size_t done = blendScaledVectors(dst, src, count, globalAlpha, Plain());
    reference.blendScaled(dst + 4 * done, src + 4 * done, count - done, globalAlpha);
}

template <class Change>
std::size_t blendChanged(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha,
                         Change change) {
    return globalAlpha == 255 ? blendOverVectors(dst, src, count, change)
                              : blendScaledVectors(dst, src, count, globalAlpha, change);
}

template <class Light>
std::size_t blendLit(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha,
                     const Tone& tone, const Light& light) {
    if (!tone.isGray) return blendChanged(dst, src, count, globalAlpha, light);
    GrayWords words;
    if (!prepareGray(tone.weights, words)) return 0;
    std::uint8_t gray[16 * vecBytes];
    const std::size_t whole = count - count % vecPixels;
    for (std::size_t i = 0; i < 4 * whole; i += sizeof gray) {
        const std::size_t left = 4 * whole - i;
        const std::size_t bytes = left < sizeof gray ? left : sizeof gray;
        makeGray(gray, src + i, bytes, light, words);
        blendChanged(dst + i, gray, bytes / 4, globalAlpha, Plain());
    }
    return whole;
}

template <class Adjustment>
std::size_t blendAdjusted(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha,
                          const Tone& tone, const Adjustment& adjustment) {
    return tone.lightens ? blendLit(dst, src, count, globalAlpha, tone, Lighter<Adjustment>{adjustment})
                         : blendLit(dst, src, count, globalAlpha, tone, Darker<Adjustment>{adjustment});
}

void blendToned(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha,
                const Tone& tone) {
    std::size_t done = 0;
    if (!tone.isLight)
        done = blendLit(dst, src, count, globalAlpha, tone, Plain());
    else if (tone.isLinear)
        done = blendAdjusted(dst, src, count, globalAlpha, tone, LinearAdjustment{all32(tone.scale), all32(tone.bias)});
    else
        done = blendAdjusted(dst, src, count, globalAlpha, tone, TabledAdjustment{tone.adjust, tone.lightens});
    reference.blendToned(dst + 4 * done, src + 4 * done, count - done, globalAlpha, tone);
}

inline void useBlend(Table& table) {
    table.blendOver = blendOver;
    table.blendScaled = blendScaled;
    table.blendToned = blendToned;
}

} // namespace
} // namespace pixkit::kernels
