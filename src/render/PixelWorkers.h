// Workers that effects and drawing share: lightness-adjusted and mirrored copies of a part of an image.
#pragma once
#include "kernels/kernels.h"
#include "shared/PixelView.h"
#include <cstdint>

namespace pixkit {

// A lightness adjustment alone: what each alpha adds to the colours or takes from them. Lightness is a
// percentage, -100 .. 100, of each pixel's alpha: 0 .. alpha is the range of a premultiplied channel.
kernels::Tone spt_LightnessTone(float Lightness) noexcept;

// Fills `rtnArray` with the lightness-adjusted copy of the rectangle of its size whose left edge is SrcX and whose top
// row is SrcY, counted from the top of `cImage`, within which it lies; both views are bottom-up. `rtnArray` may be the
// rectangle itself.
void spt_LightenDarken(float Lightness, PixelView rtnArray, std::size_t SrcX, std::size_t SrcY, ConstPixelView cImage);

// A rectangle and the size that it is to be drawn at, where a newWidth below 1 asks for reversed columns and a negative
// newHeight for reversed rows. The rectangle lies within the image, SrcY counted from its top.
struct MirrorRequest {
    std::int32_t SrcX, SrcY, srcWidth, srcHeight, newWidth, newHeight;
};

// Copies the rectangle of `cImage`, mirrored as asked, into `mirrorBytes`: srcWidth x srcHeight pixels of a buffer or
// of another host, bottom-up, not overlapping the image. SrcX and SrcY become 0, the new sizes, which are above the
// lowest 32-bit number, their absolute values. False, with nothing done, when there is nothing to mirror.
bool spt_MirrorDIB(MirrorRequest& request, PixelView mirrorBytes, ConstPixelView cImage);

} // namespace pixkit
