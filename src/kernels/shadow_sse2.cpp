#include "kernels/shadow_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useShadowSse2(Table& table) noexcept {
    useShadow(table);
}
