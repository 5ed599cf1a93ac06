// Pictures at another size: a copy of each nearest pixel, or the mean of 2 x 2 weighted by distance.
#pragma once
#include "render/PixelBuffer.h"
#include "shared/PixelView.h"
#include <cstdint>
#include <limits>

namespace pixkit {

// A part of a destination, in its coordinates; right and bottom lie behind the last pixel.
struct VisiblePart {
    std::int32_t left = 0, top = 0;
    std::int32_t right = std::numeric_limits<std::int32_t>::max();
    std::int32_t bottom = std::numeric_limits<std::int32_t>::max();
};

// Resamples the rectangle SrcX, SrcY (counted from the top), srcWidth, srcHeight of `source`, an image or a mirrored
// copy, to destWidth x destHeight pixels. A source size of 0 means the whole width or height.
//
// The scaled picture lies in a destination at destX, destY; only what is `visible` there is computed, by default all
// that lies before neither edge of the destination's origin. On return the four are the rectangle that `rSizedBytes`
// holds, so that drawing continues with them and the source origin 0, 0. What is computed has the same bytes whatever
// is cut off.
//
// Position k of a column is k * (srcWidth / destWidth) + SrcX in double precision, without half-pixel centring; rows
// alike, counted from the bottom. HighQuality off: each pixel is a copy of the one at its position rounded down. On:
// see the definition. Results are the same in every build.
//
// True when the buffer was filled. False, with nothing changed, for a rectangle that is empty or not within the source,
// a destination size below 1, or when nothing of it is visible. Throws std::bad_alloc.
bool spt_pvResize(PixelBuffer& rSizedBytes, ConstPixelView source, std::int32_t SrcX, std::int32_t SrcY,
                  std::int32_t srcWidth, std::int32_t srcHeight, std::int32_t& destX, std::int32_t& destY,
                  std::int32_t& destWidth, std::int32_t& destHeight, bool HighQuality, const VisiblePart& visible = {});

// The same for all of a source into pixels of the caller's, whose size is the new one; at least 1 x 1 both.
void spt_pvResize(PixelView rSizedBytes, ConstPixelView source, bool HighQuality);

} // namespace pixkit
