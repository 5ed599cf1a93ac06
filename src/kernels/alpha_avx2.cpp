#include "kernels/alpha_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useAlphaAvx2(Table& table) noexcept {
    useAlpha(table);
}
