// Drawing through the bridge to GDI+.
#pragma once
#include "render/DrawJob.h"

namespace pixkit {

class cGDIPlus;

// Has a job drawn by GDI+. What decides about colours, gray and lightness, is done by the component itself beforehand,
// as is mirroring, and so comes out as without GDI+. False, with nothing drawn, where GDI+ does not draw it, or not
// right, and where there is nothing of it to be seen. Throws std::bad_alloc.
bool spt_RenderGDIplus(DrawJob job, cGDIPlus& cGDIp);

} // namespace pixkit
// SPDX-License-Identifier: MIT
