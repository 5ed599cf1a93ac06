#include "kernels/jpeg_simd.h"
#include "kernels/variants.h"

void pixkit::kernels::useJpegSse2(Table& table) noexcept {
    useJpeg(table);
}
