#include "kernels/shadow_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useShadowAvx2(Table& table) noexcept {
    useShadow(table);
}
