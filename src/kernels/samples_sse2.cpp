#include "kernels/samples_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useSamplesSse2(Table& table) noexcept {
    useSamples(table);
}
