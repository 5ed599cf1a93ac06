#include "kernels/filtering_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useFilteringSse2(Table& table) noexcept {
    useFiltering(table);
}
