// The fixed-point factors of the JPEG kernels, which the reference and the vector variants share.
#pragma once
#include <cstdint>

namespace pixkit::kernels::jpeg {

// --- colours, in units of 1 / 2^15. Those of Y add up to 1, those of Cb and Cr to 0.
constexpr int colourBits = 15;
constexpr std::int16_t yRed = 9798, yGreen = 19235, yBlue = 3735;       // 0.299, 0.587, 0.114
constexpr std::int16_t cbRed = -5529, cbGreen = -10855, cbBlue = 16384; // -0.168736, -0.331264, 0.5
constexpr std::int16_t crRed = 16384, crGreen = -13720, crBlue = -2664; // 0.5, -0.418688, -0.081312
constexpr std::int32_t yRounding = 1 << (colourBits - 1);
// One below a half: the largest sum must not round up to 256.
constexpr std::int32_t chromaRounding = (128 << colourBits) + (1 << (colourBits - 1)) - 1;

// --- transform, in units of 1 / 2^13
constexpr int factorBits = 13;
constexpr int passBits = 2; // that the first pass keeps behind the point
constexpr std::int16_t fix_0_298631336 = 2446, fix_0_390180644 = 3196, fix_0_541196100 = 4433, fix_0_765366865 = 6270,
                       fix_0_899976223 = 7373, fix_1_175875602 = 9633, fix_1_501321110 = 12299, fix_1_847759065 = 15137,
                       fix_1_961570560 = 16069, fix_2_053119869 = 16819, fix_2_562915447 = 20995,
                       fix_3_072711026 = 25172;

} // namespace pixkit::kernels::jpeg
// SPDX-License-Identifier: MIT
