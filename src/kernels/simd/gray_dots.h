// What kernels make gray with, for sets that add up the products of four bytes at once.
#pragma once
#include "kernels/simd/gray_sums.h"
#include <cmath>

namespace pixkit::kernels {
namespace {

// Sums in units of 1/2^24, whose highest byte is the gray. Weights are rounded to such units, so that a sum errs by at
// most 383 of them; 512 are added, and one that is less than 1024 above a whole number decides nothing.
class GrayMaker {
  public:
    // False for weights that vectors cannot take.
    bool prepare(const GrayWeights& weights) {
        if (!prepareGray(weights, m_words)) return false;
        const auto units = [](float weight) {
            return static_cast<std::uint32_t>(std::lround(static_cast<double>(weight) * 0x1p24));
        };
        const std::uint32_t b = units(weights.b), g = units(weights.g), r = units(weights.r);
        if ((b | g | r) >> 24 != 0) return false;
        // The products are of unsigned bytes with signed ones: 128 is taken off each colour, and what that takes off
        // the sum stands with the half in the constant, whose bytes are weights of the alpha, which is made 1.
        const std::uint32_t constant = 128 * (b + g + r) + (1U << 23) + 512;
        const auto digits = [&](int shift) {
            const auto digit = [&](std::uint32_t number) { return number >> shift & 0xFF; };
            return keptConstant(all32(digit(b) | digit(g) << 8 | digit(r) << 16 | digit(constant) << 24));
        };
        m_high = digits(16), m_middle = digits(8), m_low = digits(0);
        m_start = keptConstant(all32(constant >> 24 << 8));
        return true;
    }

    // The pixels with their gray in the colours; alpha stays as it is.
    Vec operator()(Vec pixels) const {
        const Vec centred = maskedXor(pixels, m_colours, m_centre);
        Vec sum = addByteProducts(m_start, m_high, centred);
        sum = addByteProducts(shiftLeft32<8>(sum), m_middle, centred);
        sum = addByteProducts(shiftLeft32<8>(sum), m_low, centred);
        if (!anyNoneSet32(sum, m_undecided)) [[likely]]
            return withHighInColours(pixels, sum, m_colourBytes);
        return select(all32(alphaByte), pixels, lowInColours(exactGray(pixels, m_words)));
    }

  private:
    GrayWords m_words;
    Vec m_high, m_middle, m_low, m_start;
    Vec m_colours = keptConstant(all32(colourBytes));
    Vec m_centre = keptConstant(all32(0x01808080));
    Vec m_undecided = keptConstant(all32(0x00FFFC00));
    LaneMask m_colourBytes = keptMask(0x7777777777777777);
};

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
