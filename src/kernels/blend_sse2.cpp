#include "kernels/blend_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useBlendSse2(Table& table) noexcept {
    useBlend(table);
}
