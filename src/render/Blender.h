// The software blender: draws premultiplied pixels over a device context or another image. Its integer arithmetic is
// exact, and the reference for every other way of drawing.
#pragma once
#include "render/DrawJob.h"

namespace pixkit {

// Draws the source, neither mirrored nor stretched nor rotated, over what can be reached of the destination (the job's
// limits). The lightness adjustment is applied first, then the gray formula, then the global alpha.
//
// Of a host all four channels are blended, alpha by the same rule; what it says of itself (Alpha, ImageType) stays. It
// may be the image that is drawn. A device context's pixels are blended as 24-bit ones: it keeps no alpha.
//
// Done when the blend ran to its end, even when there was nothing to draw; refuses, with nothing drawn, when a device
// context cannot be read, and when it cannot be written. Throws std::bad_alloc.
Outcome spt_Win9xBlend(const DrawJob& job);

} // namespace pixkit
// SPDX-License-Identifier: MIT
