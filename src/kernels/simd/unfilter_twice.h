// Vector kernel that undoes Paeth's filter of two rows side by side, for sets whose vectors have two parts of 16 bytes.
#pragma once
#include "kernels/simd/unfilter.h"

namespace pixkit::kernels {
namespace {

struct TwoRows {
    using Vector = Vec;
};

inline Vec withParts(Vec128 low, Vec128 high) {
    return fromParts([=](std::size_t part) { return part == 0 ? low : high; });
}

// One pixel waits for the one before it, and a row for the one above. So the lower row follows two blocks behind the
// upper one, whose blocks it needs are in registers by then: what a processor does for one row it does for both. False
// where rows are too short for that.
template <int step>
bool paethTwice(std::uint8_t* row, std::uint8_t* below, const std::uint8_t* above, std::size_t bytes) {
    constexpr int lane = laneBytes(step);
    constexpr std::size_t one = blockBytes(step), behind = 2 * one;
    if (bytes < behind + 16) return false;
    PaethBlocks<lane, OneRow> upper, lower;
    Vec128 done[2]; // the upper row's blocks that the lower row has not passed
    for (std::size_t i = 0; i < 2; ++i) {
        done[i] = upper.block(loadBlock<step>(row + i * one), loadBlock<step>(above + i * one));
        storeBlock<step>(row + i * one, done[i]);
    }
    PaethBlocks<lane, TwoRows> both{withParts(upper.left, lower.left), withParts(upper.lastAbove, lower.lastAbove)};
    std::size_t i = behind;
    for (; bytes - i >= 16; i += one) {
        const Vec x = withParts(loadBlock<step>(row + i), loadBlock<step>(below + i - behind));
        const Vec pixels = both.block(x, withParts(loadBlock<step>(above + i), done[0]));
        storeBlock<step>(row + i, partOf<0>(pixels));
        storeBlock<step>(below + i - behind, partOf<1>(pixels));
        done[0] = done[1];
        done[1] = partOf<0>(pixels);
    }
    scalar::unfilterPaethFrom(row, above, i, bytes, step);
    lower = {partOf<1>(both.left), partOf<1>(both.lastAbove)};
    for (std::size_t k = 0; k < 2; ++k) {
        std::uint8_t* const at = below + i - behind + k * one;
        storeBlock<step>(at, lower.block(loadBlock<step>(at), done[k]));
    }
    scalar::unfilterPaethFrom(below, row, i, bytes, step);
    return true;
}

void unfilterPaethSideBySide(std::uint8_t* row, std::uint8_t* below, const std::uint8_t* above, std::size_t bytes,
                             std::size_t step) {
    // The others are rare.
    if (step == 3 && paethTwice<3>(row, below, above, bytes)) return;
    if (step == 4 && paethTwice<4>(row, below, above, bytes)) return;
    unfilterPaethTwice(row, below, above, bytes, step);
}

void useUnfilterTwice(Table& table) {
    table.unfilterPaethTwice = unfilterPaethSideBySide;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
