// Vector kernels for drawing one picture over another.
#pragma once
#include "kernels/scalar.h"
#include "kernels/simd.h"

namespace pixkit::kernels {
namespace {

inline bool isClear(Vec pixels) {
#ifdef __AVX2__
    return _mm256_testz_si256(pixels, all32(alphaByte)) != 0;
#else
    return allZero(both(pixels, all32(alphaByte)));
#endif
}
inline bool isOpaque(Vec pixels) {
#ifdef __AVX2__
    return _mm256_testc_si256(pixels, all32(alphaByte)) != 0;
#else
    return allZero(without(all32(alphaByte), pixels));
#endif
}

// Clear pixels draw nothing, whatever colour they hold.
inline Vec withoutColourInClear(Vec pixels) {
    return without(pixels, equal32(both(pixels, all32(alphaByte)), zeros()));
}

// x / 255 truncated, 256 for what is 65,535 or was held there.
inline Vec dividedBy255Held(Vec x) {
    return multiplyHigh16(addHeldUnsigned16(x, all16(1)), all16(257));
}

inline Vec over(Vec under, Vec pixels) {
    const Vec rest = differing(alphaInAll(pixels), all8(255));
    const Vec kept = bytesOf(dividedBy255(multiplyLow16(lowWords(under), lowWords(rest))),
                             dividedBy255(multiplyLow16(highWords(under), highWords(rest))));
    return addHeld8(kept, withoutColourInClear(pixels));
}

void blendOver(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += vecBytes) {
        const Vec v = load(src);
        if (isOpaque(v))
            store(dst, v);
        else if (!isClear(v))
            store(dst, over(load(dst), v));
    }
    scalar::blendOver(dst, src, count);
}

// Of pixels widened to words. A word of 255 stays below 65,280 / 255 in valid pictures; what invalid ones exceed it by
// is held here and when the words become bytes.
inline Vec scaledOverWords(Vec under, Vec pixels, Vec globalAlpha) {
    const Vec scaled = multiplyLow16(pixels, globalAlpha);
    const Vec rest = subtract16(all16(255), dividedBy255(alphaInAllWords(scaled)));
    return dividedBy255Held(addHeldUnsigned16(multiplyLow16(under, rest), scaled));
}

void blendScaled(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, std::uint8_t globalAlpha) {
    const Vec scale = all16(globalAlpha);
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += vecBytes) {
        const Vec v = load(src);
        if (isClear(v)) continue;
        const Vec visible = withoutColourInClear(v);
        const Vec under = load(dst);
        store(dst, bytesOf(scaledOverWords(lowWords(under), lowWords(visible), scale),
                           scaledOverWords(highWords(under), highWords(visible), scale)));
    }
    scalar::blendScaled(dst, src, count, globalAlpha);
}

void useBlend(Table& table) {
    table.blendOver = blendOver;
    table.blendScaled = blendScaled;
}

} // namespace
} // namespace pixkit::kernels
