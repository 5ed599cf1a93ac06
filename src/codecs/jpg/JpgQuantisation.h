// Quantisation tables (ITU-T T.81, Annex K.1) and the order in which a block's coefficients are coded.
#pragma once
#include "kernels/kernels.h"
#include <array>
#include <cstdint>

namespace pixkit {

// Where in a block of kernels::Table::transformBlocks the coefficients stand, in the zigzag order of T.81, Figure A.6.
extern const std::array<std::uint8_t, 64> jpgZigzag;

// A set of 64 bits, one for each coefficient where it stands in the block, as one for each place in the zigzag order.
std::uint64_t jpgZigzagBits(std::uint64_t blockBits) noexcept;

// 64 divisors in zigzag order, 1 .. 255 each.
using JpgQuantisation = std::array<std::uint8_t, 64>;

// The example tables of Annex K, for luminance or for chrominance, scaled: 50 takes them as they are, 100 makes every
// divisor 1, 1 makes them 50 times as large. Quality 1 .. 100.
JpgQuantisation jpgQuantisation(bool isChroma, std::int32_t quality) noexcept;

kernels::BlockQuantiser jpgBlockQuantiser(const JpgQuantisation& table) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
