#include "kernels/effects_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useEffectsSse2(Table& table) noexcept {
    useEffects(table);
}
