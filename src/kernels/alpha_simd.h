// Vector kernels for the alpha channel.
#pragma once
#include "kernels/scalar.h"
#include "kernels/simd.h"

namespace pixkit::kernels {
namespace {

// Passes whole vectors that leave the verdict `consistent`; returns the first pixel that it did not pass.
std::size_t scanConsistent(const std::uint8_t* pixels, std::size_t count, AlphaScan& scan) {
    Vec clear = zeros();
    Vec opaque = zeros();
    std::size_t i = 0;
    for (; count - i >= vecPixels; i += vecPixels) {
        const Vec v = load(pixels + 4 * i);
        if (!allZero(subtractHeld8(v, alphaInAll(v)))) break;
        clear = subtract32(clear, equal32(v, zeros()));
        opaque = subtract32(opaque, equal32(both(v, all32(alphaByte)), all32(alphaByte)));
    }
    const std::size_t clearCount = laneSum32(clear);
    const std::size_t opaqueCount = laneSum32(opaque);
    scan.zeroCount += clearCount;
    scan.opaqueCount += opaqueCount;
    if (clearCount + opaqueCount < i) scan.partial = true;
    return i;
}

// Passes whole vectors of clear pixels.
std::size_t scanClear(const std::uint8_t* pixels, std::size_t count, AlphaScan& scan) {
    std::size_t i = 0;
    while (count - i >= vecPixels && allZero(both(load(pixels + 4 * i), all32(alphaByte))))
        i += vecPixels;
    scan.zeroCount += i;
    return i;
}

bool scanAlpha(const std::uint8_t* pixels, std::size_t count, AlphaScan& scan) {
    while (count >= vecPixels) {
        const std::size_t passed =
            scan.state == AlphaScan::consistent ? scanConsistent(pixels, count, scan) : scanClear(pixels, count, scan);
        pixels += 4 * passed;
        count -= passed;
        if (count < vecPixels) break;
        // The vector that changes the verdict is settled pixel by pixel.
        if (!scalar::scanAlpha(pixels, vecPixels, scan)) return false;
        pixels += vecBytes;
        count -= vecPixels;
    }
    return scalar::scanAlpha(pixels, count, scan);
}

void setOpaque(std::uint8_t* pixels, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, pixels += vecBytes)
        store(pixels, either(load(pixels), all32(alphaByte)));
    scalar::setOpaque(pixels, count);
}

bool premultiply(std::uint8_t* pixels, std::size_t count) {
    Vec plusOne = zeros(); // alpha + 1 is 0 or 1 for clear and opaque pixels, and only for them
    for (; count >= vecPixels; count -= vecPixels, pixels += vecBytes) {
        const Vec v = load(pixels);
        plusOne = either(plusOne, add32(v, all32(0x01000000)));
        store(pixels, premultiplied(v));
    }
    const bool partial = !allZero(both(plusOne, all32(0xFE000000U)));
    return scalar::premultiply(pixels, count) || partial;
}

// One division a pixel. The true quotient is either whole or at least 1/65,025 of itself below the next whole number;
// the factor is too large by about one millionth, which outweighs every rounding and reaches no next number.
Vec unpremultiplied(Vec pixels) {
    const Vec alpha = right32<24>(pixels);
    // Clear pixels are divided by 255, which copies them, and nothing is ever divided by zero: a host may trap that.
    const Vec divisor = either(alpha, right32<24>(equal32(alpha, zeros())));
    const VecFloat factor = divide(allFloat(255.0F * (1.0F + 0x1p-20F)), toFloat(divisor));
    const Vec low = all32(0xFF);
    const Vec blue = truncated(multiply(toFloat(both(pixels, low)), factor));
    const Vec green = truncated(multiply(toFloat(both(right32<8>(pixels), low)), factor));
    const Vec red = truncated(multiply(toFloat(both(right32<16>(pixels), low)), factor));
    const Vec blueGreen = either(both(blue, low), left32<8>(both(green, low)));
    return either(either(blueGreen, left32<16>(both(red, low))), both(pixels, all32(alphaByte)));
}

void unpremultiply(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += vecBytes)
        store(dst, unpremultiplied(load(src)));
    scalar::unpremultiply(dst, src, count);
}

void useAlpha(Table& table) {
    table.scanAlpha = scanAlpha;
    table.setOpaque = setOpaque;
    table.premultiply = premultiply;
    table.unpremultiply = unpremultiply;
}

} // namespace
} // namespace pixkit::kernels
