#include "kernels/filtering_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useFilteringAvx2(Table& table) noexcept {
    useFiltering(table);
}
