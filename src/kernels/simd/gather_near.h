// Vector kernels that gather pixels which lie close together, for sets that can pick lanes by number (`lanesAt`).
#pragma once
#include "kernels/simd/resample.h"

namespace pixkit::kernels {
namespace {

// A vector of pixels out of the one or two that begin with the first of them, as long as these are in the row.
void gatherNearPixels(std::uint8_t* dst, const std::uint8_t* src, const std::int32_t* offsets, std::size_t count) {
    constexpr auto vecSpan = static_cast<std::int32_t>(vecBytes);
    const std::int32_t end = count > 0 ? offsets[count - 1] + 4 : 0;
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, offsets += vecPixels) {
        const std::int32_t begin = offsets[0];
        const std::int32_t span = offsets[vecPixels - 1] - begin;
        if (span >= 2 * vecSpan || end - begin < 2 * vecSpan) {
            for (std::size_t i = 0; i < vecPixels; i += 4)
                store128(dst + 4 * i, fourPixels([&](std::size_t k) { return src + offsets[i + k]; }));
            continue;
        }
        const Vec bytes =
            subtract32(load(reinterpret_cast<const std::uint8_t*>(offsets)), all32(static_cast<unsigned>(begin)));
        const Vec places = shiftRight32<2>(bytes);
        Vec pixels = lanesAt(load(src + begin), places);
        if (span >= vecSpan) {
            const Vec more = lanesAt(load(src + begin + vecSpan), places);
            pixels = select(greaterSigned32(bytes, all32(vecBytes - 1)), more, pixels);
        }
        store(dst, pixels);
    }
    gatherPixels(dst, src, offsets, count);
}

// Four columns at a time out of the eight pixels that begin with the first of them.
void mixNearPairs(std::uint16_t* dst, const std::uint8_t* src, const PairPattern& pattern, std::size_t groups) {
    Vec places[4];
    Vec weights[4];
    for (std::size_t i = 0; i < 4; ++i) {
        if (pattern.places[8 * i + 7] >= 8) return mixPairs(dst, src, pattern, groups);
        places[i] = widenedTo32(pattern.places + 8 * i);
        weights[i] = load(pattern.weights + vecBytes * i);
    }
    for (; groups > 0; --groups, src += std::size_t{4} * pattern.advance) {
        for (std::size_t i = 0; i < 4; ++i, dst += 16) {
            const Vec pairs = lanesAt(load(src + std::size_t{4} * pattern.starts[i]), places[i]);
            store(reinterpret_cast<std::uint8_t*>(dst), multiplyAddPairs8(channelsByTurns(pairs), weights[i]));
        }
    }
}

inline void useGatherNear(Table& table) {
    table.gatherPixels = gatherNearPixels;
    table.mixPairs = mixNearPairs;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
