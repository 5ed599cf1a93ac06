// The kernels for AVX2. The layer comes first: the kernels are written with its words.
#include "kernels/simd/avx2.h"

#include "kernels/simd/all.h"
#include "kernels/simd/crc.h"
#include "kernels/simd/gather_near.h"
#include "kernels/simd/join_codes.h"
#include "kernels/simd/unfilter_twice.h"
#include "kernels/simd/units.h"

void pixkit::kernels::useAvx2(Table& table) noexcept {
    useAll(table);
    useCrc(table);
    useGatherNear(table);
    useJoinCodes(table);
    useUnfilterTwice(table);
}
// SPDX-License-Identifier: MIT
