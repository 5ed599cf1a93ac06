// Pictures at another size: a copy of each nearest pixel, or the mean of 2 x 2 weighted by distance.
#pragma once
#include "render/DrawJob.h"
#include "render/PixelBuffer.h"
#include "shared/PixelView.h"

namespace pixkit {

// Resamples the job's source to the size of its destination, of which only what is visible is worked out, at least one
// pixel. On return the job draws the buffer over that. The bytes there are the same whatever is cut off.
//
// Position k of a column is k * (source width / destination width) + source left in double precision, without
// half-pixel centring; rows alike, counted from the bottom. HighQuality off: each pixel is a copy of the one at its
// position rounded down. On: see the definition. Results are the same in every build. Throws std::bad_alloc.
void spt_pvResize(DrawJob& job, PixelBuffer& rSizedBytes);

// The same for all of a picture, into pixels of the caller's, whose size is the new one; at least 1 x 1 both.
void spt_pvResize(PixelView rSizedBytes, ConstPixelView source, bool HighQuality);

} // namespace pixkit
// SPDX-License-Identifier: MIT
