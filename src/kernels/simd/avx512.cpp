// The kernels for AVX-512 that gain by it; all others stay those for AVX2. Processors that take a vector of 64 bytes in
// two halves win only by fewer instructions, and lose where comparisons have to become vectors again. The layer comes
// first: the kernels are written with its words.
#include "kernels/simd/avx512.h"

#include "kernels/simd/gray_dots.h"

#include "kernels/simd/alpha.h"
#include "kernels/simd/blend.h"
#include "kernels/simd/checksums.h"
#include "kernels/simd/convolve.h"
#include "kernels/simd/effects.h"
#include "kernels/simd/jpeg.h"
#include "kernels/simd/layouts.h"
#include "kernels/simd/lookup_vbmi.h"
#include "kernels/simd/samples.h"
#include "kernels/simd/shadow.h"
#include "kernels/simd/units.h"

void pixkit::kernels::useAvx512(Table& table) noexcept {
    useShadow(table);
    table.copyPremultiplying = copyPremultiplying;
    table.premultiply = premultiply;
    table.grayscale = grayscale;
    table.blendToColour = blendToColour;
    table.sumAlongRow = sumAlongRow;
    table.sumRows = sumRows;
    table.blendScaled = blendScaled;
    table.blendToned = blendToned;
    table.swapRedBlue = swapRedBlue;
    table.pack24 = pack24;
    table.unpack24 = unpack24;
    table.adler32 = adler32;
    table.fromIndex8 = fromIndex8ByShuffles;
    table.fromRgba8 = fromRgba8;
    table.fromRgba16 = fromRgba16;
    table.toYCbCr = toYCbCr;
    table.halveSamples = halveSamples;
}
// SPDX-License-Identifier: MIT
