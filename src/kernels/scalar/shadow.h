// Reference kernels for box-blurred shadows.
#pragma once
#include "kernels/reference.h"

#include <cstring>

namespace pixkit::kernels {
namespace {

void slideAlphaSums(std::uint16_t* sums, const std::uint8_t* entering, const std::uint8_t* leaving, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const int enters = entering != nullptr ? entering[4 * i + 3] : 0;
        const int leaves = leaving != nullptr ? leaving[4 * i + 3] : 0;
        sums[i] = static_cast<std::uint16_t>(sums[i] + enters - leaves);
    }
}

void shadeBoxes(std::uint8_t* dst, const std::uint16_t* sums, std::size_t count, std::size_t window,
                const std::uint8_t* shades) {
    std::uint32_t tally = 0;
    for (std::size_t i = 0; i < window; ++i)
        tally += sums[i];
    // A window has columns. A tally is below 2^17, so what this reciprocal is too large by stays far below 1 / area:
    // the division is exact. NOLINTNEXTLINE(clang-analyzer-core.DivideZero)
    const std::uint64_t reciprocal = (std::uint64_t{1} << 32) / (window * window) + 1;
    for (std::size_t i = 0; i < count; ++i) {
        tally += sums[i + window];
        tally -= sums[i];
        std::memcpy(dst + 4 * i, shades + 4 * (tally * reciprocal >> 32), 4);
    }
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
