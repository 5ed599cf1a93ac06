// All kernels, for sets that profit from each. The unit has included its vector layer before.
#pragma once
#include "kernels/simd/gray.h"

#include "kernels/simd/alpha.h"
#include "kernels/simd/blend.h"
#include "kernels/simd/checksums.h"
#include "kernels/simd/convolve.h"
#include "kernels/simd/effects.h"
#include "kernels/simd/filter.h"
#include "kernels/simd/jpeg.h"
#include "kernels/simd/layouts.h"
#include "kernels/simd/resample.h"
#include "kernels/simd/samples.h"
#include "kernels/simd/shadow.h"
#include "kernels/simd/unfilter.h"
#include "kernels/simd/walks.h"

namespace pixkit::kernels {
namespace {

inline void useAll(Table& table) {
    useAlpha(table);
    useBlend(table);
    useChecksums(table);
    useConvolve(table);
    useEffects(table);
    useFilter(table);
    useJpeg(table);
    useLayouts(table);
    useResample(table);
    useSamples(table);
    useShadow(table);
    useUnfilter(table);
    useWalks(table);
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
