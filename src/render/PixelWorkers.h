// Workers that effects and drawing share: lightness-adjusted and mirrored copies.
#pragma once
#include "kernels/kernels.h"
#include "render/DrawJob.h"
#include "render/PixelBuffer.h"
#include "shared/PixelView.h"

namespace pixkit {

// A lightness adjustment alone: what each alpha adds to the colours or takes from them. Lightness is a
// percentage, -100 .. 100, of each pixel's alpha: 0 .. alpha is the range of a premultiplied channel.
kernels::Tone spt_LightnessTone(float Lightness) noexcept;

// Fills `rtnArray` with the lightness-adjusted copy of `cImage`, which has its size and may be the same pixels.
void spt_LightenDarken(float Lightness, PixelView rtnArray, ConstPixelView cImage);

// Fills `mirrorBytes` with `cImage`, the order of columns or rows reversed as asked. Both have one size and do not
// overlap. False, with nothing done, when neither is asked for.
bool spt_MirrorDIB(PixelView mirrorBytes, ConstPixelView cImage, bool mirrorsColumns, bool mirrorsRows);
// The same in the pixels themselves, with a row beside them. Throws std::bad_alloc, with nothing done.
void spt_MirrorInPlace(PixelView image, bool mirrorsColumns, bool mirrorsRows);
// Mirrors the job's source into a buffer; on return the job draws that, unmirrored, at its destination's size.
void spt_MirrorDIB(DrawJob& job, PixelBuffer& aMirrorBytes);

} // namespace pixkit
// SPDX-License-Identifier: MIT
