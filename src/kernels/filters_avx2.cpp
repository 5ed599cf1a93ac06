#include "kernels/filters_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useFiltersAvx2(Table& table) noexcept {
    useFilters(table);
}
