#include "kernels/layouts_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useLayoutsSse2(Table& table) noexcept {
    useLayouts(table);
}
