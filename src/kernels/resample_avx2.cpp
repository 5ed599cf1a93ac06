#include "kernels/resample_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useResampleAvx2(Table& table) noexcept {
    useResample(table);
}
