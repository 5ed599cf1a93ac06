#include "render/DrawJob.h"
#include "platform/gdi.h"
#include "render/Blender.h"
#include "render/PixelBuffer.h"
#include "render/PixelWorkers.h"
#include "render/Resampler.h"
#include "surface/HostAccess.h"

namespace pixkit {

Outcome DrawJob::findLimits() noexcept {
    if (destHostDIB != nullptr) {
        if (destHostDIB->Handle() == 0) return refused(noHostImage);
        limits = HostAccess::pixels(*destHostDIB).rect();
    } else {
        platform::Rect box;
        const platform::RegionKind kind = platform::GetClipBox(destinationDC, box);
        if (kind == platform::RegionKind::error) return refused("the handle to draw on is no device context");
        // Under mapping modes in which y grows upwards, or x to the left, the system gives the edges the other way
        // round.
        limits = kind == platform::RegionKind::empty
                     ? Rect{}
                     : Rect{std::min(box.left, box.right), std::min(box.top, box.bottom), std::max(box.left, box.right),
                            std::max(box.top, box.bottom)};
    }
    platform::GdiFlush();
    return done();
}

Outcome spt_DrawInSoftware(DrawJob& job) {
    if (Outcome limits = job.findLimits(); !limits) return limits;
    if (job.visible().isEmpty()) return done();
    PixelBuffer aMirrorBytes;
    PixelBuffer aResizedBytes;
    if (job.isMirroring()) spt_MirrorDIB(job, aMirrorBytes);
    if (job.isStretching()) spt_pvResize(job, aResizedBytes);
    return spt_Win9xBlend(job);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
