// Vector kernels for the alpha channel.
#pragma once
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

// By how much each colour byte exceeds its pixel's alpha: 0 in valid pixels, which is what a scan looks for.
Vec colourOverAlpha(Vec pixels) {
    return subtractSaturated8(pixels, alphaInAll(pixels));
}

// Counts, in lanes, the pixels with alpha 0 and those with 255, among pixels without colour above alpha: where alpha is
// 0 these are 0 in all four bytes.
struct AlphaCounts {
    Vec clear = zeros();
    Vec opaque = zeros();
    void add(Vec pixels) {
        clear = subtract32(clear, equal32(pixels, zeros()));
        opaque = subtract32(opaque, equal32(bitAnd(pixels, all32(alphaByte)), all32(alphaByte)));
    }
};

template <bool isCopying>
void storeIfCopying(std::uint8_t* dst, std::size_t byte, Vec pixels) {
    if constexpr (isCopying) store(dst + byte, pixels); // else dst is null
}

// Passes whole vectors that leave the verdict `consistent`; returns the first pixel that it did not pass.
template <bool isCopying>
std::size_t scanConsistent(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, AlphaScan& scan) {
    AlphaCounts counts;
    std::size_t i = 0;
    for (; count - i >= 2 * vecPixels; i += 2 * vecPixels) {
        const Vec v = load(src + 4 * i);
        const Vec w = load(src + 4 * i + vecBytes);
        if (!allZero(bitOr(colourOverAlpha(v), colourOverAlpha(w)))) break;
        storeIfCopying<isCopying>(dst, 4 * i, v);
        storeIfCopying<isCopying>(dst, 4 * i + vecBytes, w);
        counts.add(v);
        counts.add(w);
    }
    for (; count - i >= vecPixels; i += vecPixels) {
        const Vec v = load(src + 4 * i);
        if (!allZero(colourOverAlpha(v))) break;
        storeIfCopying<isCopying>(dst, 4 * i, v);
        counts.add(v);
    }
    const std::size_t clearCount = laneSum32(counts.clear);
    const std::size_t opaqueCount = laneSum32(counts.opaque);
    scan.zeroCount += clearCount;
    scan.opaqueCount += opaqueCount;
    if (clearCount + opaqueCount < i) scan.partial = true;
    return i;
}

// Passes whole vectors of clear pixels.
template <bool isCopying>
std::size_t scanClear(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, AlphaScan& scan) {
    std::size_t i = 0;
    for (; count - i >= vecPixels; i += vecPixels) {
        const Vec v = load(src + 4 * i);
        if (!allZero(bitAnd(v, all32(alphaByte)))) break;
        storeIfCopying<isCopying>(dst, 4 * i, v);
    }
    scan.zeroCount += i;
    return i;
}

template <bool isCopying>
bool scanRow(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, AlphaScan& scan) {
    while (count >= vecPixels) {
        const std::size_t passed = scan.state == AlphaScan::consistent
                                       ? scanConsistent<isCopying>(dst, src, count, scan)
                                       : scanClear<isCopying>(dst, src, count, scan);
        src += 4 * passed;
        count -= passed;
        if constexpr (isCopying) dst += 4 * passed;
        if (count < vecPixels) break;
        // The vector that changes the verdict is settled pixel by pixel.
        if (!reference.scanAlpha(src, vecPixels, scan)) {
            if constexpr (isCopying) std::memcpy(dst, src, count * 4);
            return false;
        }
        storeIfCopying<isCopying>(dst, 0, load(src));
        src += vecBytes;
        count -= vecPixels;
        if constexpr (isCopying) dst += vecBytes;
    }
    if constexpr (isCopying) return reference.copyScanningAlpha(dst, src, count, scan);
    return reference.scanAlpha(src, count, scan);
}

bool scanAlpha(const std::uint8_t* pixels, std::size_t count, AlphaScan& scan) {
    return scanRow<false>(nullptr, pixels, count, scan);
}

bool copyScanningAlpha(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, AlphaScan& scan) {
    return scanRow<true>(dst, src, count, scan);
}

void setOpaque(std::uint8_t* pixels, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, pixels += vecBytes)
        store(pixels, bitOr(load(pixels), all32(alphaByte)));
    reference.setOpaque(pixels, count);
}

// Not 0 in total exactly when some alpha is 1 to 254: alpha + 1 is 0 or 1 for opaque and clear pixels, and only for
// them.
Vec partialAlpha(Vec pixels) {
    return bitAnd(add32(pixels, all32(0x01000000)), all32(0xFE000000U));
}

bool copyPremultiplying(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    Vec partial = zeros();
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += vecBytes) {
        const Vec v = load(src);
        partial = bitOr(partial, partialAlpha(v));
        store(dst, premultiplied(v));
    }
    return reference.copyPremultiplying(dst, src, count) || !allZero(partial);
}

bool premultiply(std::uint8_t* pixels, std::size_t count) {
    return copyPremultiplying(pixels, pixels, count);
}

// One division a pixel. The true quotient is either whole or at least 1/65,025 of itself below the next whole number;
// the factor is too large by about one millionth, which outweighs every rounding and reaches no next number.
//
// Green is divided where it stands, 256 times too large, and keeps its place; red would not fit there when damaged data
// holds colour above alpha. Tried: the reciprocal as a whole and a fraction part in words, which needs four shuffles
// more and was slower.
Vec unpremultiplied(Vec pixels) {
    const Vec alpha = shiftRight32<24>(pixels);
    // Clear pixels are divided by 255, which copies them, and nothing is ever divided by zero: a host may trap that.
    const Vec divisor = bitOr(alpha, bitAnd(equal32(alpha, zeros()), all32(0xFF)));
    const VecFloat factor = divide(allFloat(255.0F * (1.0F + 0x1p-20F)), toFloat(divisor));
    const Vec blue = truncated(multiply(toFloat(bitAnd(pixels, all32(0xFF))), factor));
    const Vec green = truncated(multiply(toFloat(bitAnd(pixels, all32(0xFF00))), factor));
    const Vec red = truncated(multiply(toFloat(bitAnd(pixels, all32(0xFF0000))), multiply(factor, allFloat(0x1p-16F))));
    const Vec blueGreen = select(all32(0xFF00), green, blue);
    const Vec redAlpha = select(all32(alphaByte), pixels, shiftLeft32<16>(red));
    return select(all32(0xFFFF0000U), redAlpha, blueGreen);
}

void unpremultiply(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += vecBytes) {
        const Vec v = load(src);
        // Most pixels of most pictures are opaque or clear, in runs; the test costs the others an eighth.
        store(dst, allZero(partialAlpha(v)) ? v : unpremultiplied(v));
    }
    reference.unpremultiply(dst, src, count);
}

// The same divisions rounded up: of what is a little too small, where it is not 0, the next whole number. Colours do
// not exceed their alpha here, so that red fits where it stands, too.
Vec straightened(Vec pixels) {
    const Vec colours = min8(pixels, alphaInAll(pixels));
    const Vec alpha = shiftRight32<24>(pixels);
    const Vec divisor = bitOr(alpha, bitAnd(equal32(alpha, zeros()), all32(0xFF)));
    const VecFloat factor = divide(allFloat(255.0F * (1.0F - 0x1p-20F)), toFloat(divisor));
    const auto below = [&](unsigned mask) {
        return truncated(multiply(toFloat(bitAnd(colours, all32(mask))), factor));
    };
    const Vec blueGreen = bitOr(below(0xFF), bitAnd(below(0xFF00), all32(0xFF00)));
    const Vec redAlpha = bitOr(bitAnd(below(0xFF0000), all32(0xFF0000)), bitAnd(pixels, all32(alphaByte)));
    return add8(bitOr(blueGreen, redAlpha), andNot(all32(0x010101), equal8(colours, zeros())));
}

void straighten(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += vecBytes) {
        const Vec v = load(src);
        // Of pixels that are opaque or clear only clear ones change, whose alpha has no highest bit.
        store(dst, allZero(partialAlpha(v)) ? bitAnd(v, shiftRightSigned32<31>(v)) : straightened(v));
    }
    reference.straighten(dst, src, count);
}

inline void useAlpha(Table& table) {
    table.scanAlpha = scanAlpha;
    table.copyScanningAlpha = copyScanningAlpha;
    table.setOpaque = setOpaque;
    table.premultiply = premultiply;
    table.copyPremultiplying = copyPremultiplying;
    table.unpremultiply = unpremultiply;
    table.straighten = straighten;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
