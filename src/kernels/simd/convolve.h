// Vector kernels for weighted sums of pixels. Words of pixels are multiplied in pairs, with 32 bits for the sums.
#pragma once
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

// --- along a row

// The sums of pixel i, in the next part of the vector of pixel i + 2. Each part reads a row on its own: side by side in
// one pixel's sum, parts would have to be added up in the end, which takes longer.
inline Vec sumsAlongRow(const std::uint8_t* src, const TapsAlongRow& along, std::size_t i, Vec half) {
    const std::uint8_t* pixels[vecParts];
    for (std::size_t part = 0; part < vecParts; ++part)
        pixels[part] = src + along.offsets[i + 2 * part];
    const auto* const weights = reinterpret_cast<const std::uint8_t*>(along.weights + i * along.taps);
    Vec even = half, odd = zeros();
    for (std::size_t tap = 0; tap < along.taps; tap += 4) {
        const Vec four = fromParts([&](std::size_t part) { return load128(pixels[part] + 4 * tap); });
        const Vec pairs =
            fromParts([&](std::size_t part) { return load64(weights + 2 * (2 * part * along.taps + tap)); });
        const Vec near = widenLow8(four), far = widenHigh8(four);
        even = add32(even, multiplyAddPairs16(interleaveLow16(near, far), repeatedInParts32<0>(pairs)));
        odd = add32(odd, multiplyAddPairs16(interleaveHigh16(near, far), repeatedInParts32<1>(pairs)));
    }
    return shiftedRightSigned32(add32(even, odd), along.shift);
}

void sumAlongRow(std::int16_t* dst, const std::uint8_t* src, const TapsAlongRow& taps, std::size_t count) {
    constexpr std::size_t step = 2 * vecParts;
    if (count < step) return reference.sumAlongRow(dst, src, taps, count);
    const TapsAlongRow along = taps; // which could be what is stored to, as far as the compiler knows
    const Vec half = all32(1U << (along.shift - 1));
    const auto put = [&](std::size_t i) {
        store(reinterpret_cast<std::uint8_t*>(dst + 4 * i),
              packSigned32(sumsAlongRow(src, along, i, half), sumsAlongRow(src, along, i + 1, half)));
    };
    for (std::size_t i = 0; i + step <= count; i += step)
        put(i);
    if (count % step != 0) put(count - step); // what is left, and some once more
}

// --- across rows

// A vector of pixels.
inline Vec sumOfRows(const WeighedRows& weighed, std::size_t at, Vec half) {
    constexpr std::size_t words = vecBytes / 2;
    Vec sums[4] = {half, half, half, half};
    for (std::size_t row = 0; row < weighed.count; row += 2) {
        const auto* const first = reinterpret_cast<const std::uint8_t*>(weighed.rows[row] + at);
        const auto* const second = reinterpret_cast<const std::uint8_t*>(weighed.rows[row + 1] + at);
        std::uint32_t pair = 0;
        std::memcpy(&pair, weighed.weights + row, sizeof pair);
        const Vec weights = all32(pair);
        for (std::size_t side = 0; side < 2; ++side) {
            const Vec a = load(first + 2 * words * side), b = load(second + 2 * words * side);
            sums[2 * side] = add32(sums[2 * side], multiplyAddPairs16(interleaveLow16(a, b), weights));
            sums[2 * side + 1] = add32(sums[2 * side + 1], multiplyAddPairs16(interleaveHigh16(a, b), weights));
        }
    }
    for (Vec& sum : sums)
        sum = shiftedRightSigned32(sum, weighed.shift);
    return packedInOrder(packUnsigned16(packSigned32(sums[0], sums[1]), packSigned32(sums[2], sums[3])));
}

void sumRows(std::uint8_t* dst, const WeighedRows& weighed, std::size_t count, bool isOpaque) {
    if (count < vecPixels) return reference.sumRows(dst, weighed, count, isOpaque);
    const Vec half = all32(1U << (weighed.shift - 1));
    const Vec opaque = all32(isOpaque ? alphaByte : 0);
    const auto put = [&](std::size_t i) {
        const Vec pixels = bitOr(sumOfRows(weighed, 4 * i, half), opaque);
        store(dst + 4 * i, min8(pixels, alphaInAll(pixels)));
    };
    for (std::size_t i = 0; i + vecPixels <= count; i += vecPixels)
        put(i);
    if (count % vecPixels != 0) put(count - vecPixels); // what is left, and some once more
}

inline void useConvolve(Table& table) {
    table.sumAlongRow = sumAlongRow;
    table.sumRows = sumRows;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
