// What kernels make gray with: GrayMaker, for sets without products of bytes.
#pragma once
#include "kernels/simd/gray_sums.h"

namespace pixkit::kernels {
namespace {

class GrayMaker {
  public:
    // False for weights that vectors cannot take.
    bool prepare(const GrayWeights& weights) { return prepareGray(weights, m_words); }

    // The pixels with their gray in the colours; alpha stays as it is.
    Vec operator()(Vec pixels) const {
        const GraySums sums = graySums(pixels, m_words);
        Vec gray = shiftRight32<14>(sums.sum);
        // With nothing left below the shift there may be a tie, which this has rounded up. That is rare.
        const Vec rest = bitAnd(sums.sum, m_words.belowShift);
        if (!allZero(equal32(rest, zeros()))) [[unlikely]]
            gray = exactGray(pixels, m_words);
        return select(m_alpha, pixels, lowInColours(gray));
    }

  private:
    GrayWords m_words;
    Vec m_alpha = keptConstant(all32(alphaByte));
};

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
