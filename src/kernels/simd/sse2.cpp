// The kernels for SSE2. The layer comes first: the kernels are written with its words.
#include "kernels/simd/sse2.h"

#include "kernels/simd/all.h"
#include "kernels/simd/units.h"

void pixkit::kernels::useSse2(Table& table) noexcept {
    useAll(table);
}
// SPDX-License-Identifier: MIT
