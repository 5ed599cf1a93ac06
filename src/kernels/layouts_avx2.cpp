#include "kernels/layouts_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useLayoutsAvx2(Table& table) noexcept {
    useLayouts(table);
}
