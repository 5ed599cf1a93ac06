// Bilinear resampling.
#pragma once
#include "render/ResampledAxis.h"
#include "shared/PixelView.h"

namespace pixkit {

// Fills `output` with the pixels that spt_pvResize defines, one for each counted column and row. Throws std::bad_alloc.
void resampleBilinear(PixelView output, ConstPixelView source, const ResampledAxis& columns, const ResampledAxis& rows);

} // namespace pixkit
// SPDX-License-Identifier: MIT
