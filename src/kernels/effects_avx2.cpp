#include "kernels/effects_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useEffectsAvx2(Table& table) noexcept {
    useEffects(table);
}
