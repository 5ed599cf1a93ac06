// Vector kernels for resampling.
#pragma once
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

// --- nearest pixels

// Gather instructions were tried and are slower than single loads, by half where memory is the limit.
void gatherPixels(std::uint8_t* dst, const std::uint8_t* src, const std::int32_t* offsets, std::size_t count) {
    for (; count >= 4; count -= 4, dst += 16, offsets += 4)
        store128(dst, fourPixels([&](std::size_t i) { return src + offsets[i]; }));
    reference.gatherPixels(dst, src, offsets, count);
}

// --- bilinear: the four channels of a pixel side by side in double precision

void widenPixels(double* dst, const std::uint8_t* src, std::size_t count) {
    for (; count > 0; --count, dst += 4, src += 4)
        storeChannels(dst, channelsAt(src));
}

// One pixel's channels as four numbers. Working out the weights of four columns at once, and loading each from memory
// again, was tried and is slower by a third.
template <bool twoRows, class Rows>
inline Vec128 mixedAt(const Rows& rows, std::int32_t offset, const double* nearWeight, const double* farWeight) {
    const Weight near = weightAt(nearWeight);
    const Weight far = weightAt(farWeight);
    const Weight first = weightAt(&rows.firstWeight);
    const ChannelPair upper = channelPairAt(rows.first + offset);
    Channels total = add(multiply(upper.near, multiply(near, first)), multiply(upper.far, multiply(far, first)));
    if (twoRows) {
        const Weight second = weightAt(&rows.secondWeight);
        const ChannelPair lower = channelPairAt(rows.second + offset);
        total = add(total, multiply(lower.near, multiply(near, second)));
        total = add(total, multiply(lower.far, multiply(far, second)));
    }
    return truncated(total);
}

template <bool twoRows, class Rows>
inline void sampleFour(std::uint8_t* dst, const Rows& rows, const std::int32_t* offsets, const double* nearWeights,
                       const double* farWeights) {
    const auto mixed = [&](std::size_t i) {
        return mixedAt<twoRows>(rows, offsets[i], nearWeights + i, farWeights + i);
    };
    const Vec128 left = packSigned32(mixed(0), mixed(1));
    store128(dst, packUnsigned16(left, packSigned32(mixed(2), mixed(3))));
}

// The rows by value: their weights could be what is stored to, as far as the compiler knows.
template <bool twoRows, class Rows>
void sampleRow(std::uint8_t* dst, Rows rows, const std::int32_t* offsets, const double* nearWeights,
               const double* farWeights, std::size_t count) {
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4)
        sampleFour<twoRows>(dst + 4 * i, rows, offsets + i, nearWeights + i, farWeights + i);
    if (i == count) return;
    i = count - 4; // what is left, and some once more
    sampleFour<twoRows>(dst + 4 * i, rows, offsets + i, nearWeights + i, farWeights + i);
}

void sampleBilinear(std::uint8_t* dst, const WeightedRows& rows, const std::int32_t* offsets, const double* nearWeights,
                    const double* farWeights, std::size_t count) {
    if (count < 4) return reference.sampleBilinear(dst, rows, offsets, nearWeights, farWeights, count);
    (rows.second != nullptr ? sampleRow<true, WeightedRows>
                            : sampleRow<false, WeightedRows>)(dst, rows, offsets, nearWeights, farWeights, count);
}

void sampleWidened(std::uint8_t* dst, const WeightedWideRows& rows, const std::int32_t* offsets,
                   const double* nearWeights, const double* farWeights, std::size_t count) {
    if (count < 4) return reference.sampleWidened(dst, rows, offsets, nearWeights, farWeights, count);
    (rows.second != nullptr ? sampleRow<true, WeightedWideRows>
                            : sampleRow<false, WeightedWideRows>)(dst, rows, offsets, nearWeights, farWeights, count);
}

// --- bilinear where all weights are sixteenths: whole numbers

// The channels of a column's two pixels by turns, as bytes in front.
inline Vec128 pairAt(const std::uint8_t* p) {
    const Vec128 pixels = load64(p);
    return interleaveLow8(pixels, shiftBytesDown<4>(pixels));
}

void mixPairs(std::uint16_t* dst, const std::uint8_t* src, const PairPattern& pattern, std::size_t groups) {
    for (; groups > 0; --groups, src += std::size_t{4} * pattern.advance) {
        for (std::size_t column = 0; column < 16; column += 2, dst += 8) {
            const auto mixed = [&](std::size_t k) {
                const Vec128 pair = pairAt(src + std::size_t{4} * (pattern.starts[k / 4] + pattern.places[2 * k]));
                return multiplyAddPairs16(widenLow8(pair), widenLow8(load64(pattern.weights + 8 * k)));
            };
            store128(reinterpret_cast<std::uint8_t*>(dst), packSigned32(mixed(column), mixed(column + 1)));
        }
    }
}

void mixRows(std::uint8_t* dst, const std::uint16_t* first, const std::uint16_t* second, std::uint32_t firstWeight,
             std::uint32_t secondWeight, std::size_t count) {
    if (count < vecPixels) return reference.mixRows(dst, first, second, firstWeight, secondWeight, count);
    const Vec weight = all16(firstWeight);
    const Vec other = all16(secondWeight);
    const auto mixed = [&](std::size_t i) {
        const Vec upper = load(reinterpret_cast<const std::uint8_t*>(first + i));
        const Vec lower = load(reinterpret_cast<const std::uint8_t*>(second + i));
        return shiftRight16<8>(add16(multiplyLow16(upper, weight), multiplyLow16(lower, other)));
    };
    const auto mixOnce = [&](std::size_t i) {
        store(dst + i, packedInOrder(packUnsigned16(mixed(i), mixed(i + vecBytes / 2))));
    };
    std::size_t i = 0;
    for (; i + vecBytes <= 4 * count; i += vecBytes)
        mixOnce(i);
    if (i < 4 * count) mixOnce(4 * count - vecBytes); // what is left, and some once more
}

inline void useResample(Table& table) {
    table.mixPairs = mixPairs;
    table.mixRows = mixRows;
    table.gatherPixels = gatherPixels;
    table.widenPixels = widenPixels;
    table.sampleBilinear = sampleBilinear;
    table.sampleWidened = sampleWidened;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
