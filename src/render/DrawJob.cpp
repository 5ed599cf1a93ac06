#include "render/DrawJob.h"
#include "platform/gdi.h"
#include "render/Blender.h"
#include "render/PixelBuffer.h"
#include "render/PixelWorkers.h"
#include "render/Resampler.h"
#include "surface/HostAccess.h"
#include <algorithm>

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

namespace {

// Leaves of source and destination what is visible, where one is as large as the other.
void cutToVisible(DrawJob& job) {
    const Rect visible = job.visible();
    const auto cut = [](std::int64_t& from, std::int64_t& to, std::int64_t first, std::int64_t last, bool isMirrored) {
        from += isMirrored ? last : first;
        to -= isMirrored ? first : last;
    };
    Rect& source = job.source;
    const Rect& whole = job.destination;
    cut(source.left, source.right, visible.left - whole.left, whole.right - visible.right, job.mirrorsColumns);
    cut(source.top, source.bottom, visible.top - whole.top, whole.bottom - visible.bottom, job.mirrorsRows);
    job.destination = visible;
}

// How many rows are worked out in a buffer before they are drawn: as many as stay in the cache, and in memory that is
// there already. Fresh memory for a whole picture costs more than all the work on it. What cannot be drawn in parts is
// not: a picture drawn onto itself, which is read as it was before, and device contexts, which answer for the whole.
std::int64_t rowsAtOnce(const DrawJob& job) {
    constexpr std::int64_t bandPixels = 1 << 16;
    const Rect visible = job.visible();
    const bool isWhole =
        job.destHostDIB == nullptr || overlap(HostAccess::pixels(*job.destHostDIB).bytes(), job.image.bytes());
    return isWhole ? visible.height() : std::max<std::int64_t>(bandPixels / visible.width(), 16);
}

} // namespace

Outcome spt_DrawInSoftware(DrawJob& job) {
    if (Outcome limits = job.findLimits(); !limits) return limits;
    const Rect visible = job.visible();
    if (visible.isEmpty()) return done();
    if (!job.isMirroring() && !job.isStretching()) return spt_Win9xBlend(job);
    const std::int64_t rows = rowsAtOnce(job);
    PixelBuffer aMirrorBytes;
    if (job.isMirroring() && job.isStretching()) spt_MirrorDIB(job, aMirrorBytes);
    PixelBuffer band;
    Outcome drawn = done();
    for (std::int64_t top = visible.top; drawn && top < visible.bottom; top += rows) {
        band = {}; // before the next is taken, so that it is the same memory
        DrawJob part = job;
        part.limits = {visible.left, top, visible.right, std::min(top + rows, visible.bottom)};
        if (part.isStretching()) {
            spt_pvResize(part, band);
        } else {
            cutToVisible(part);
            spt_MirrorDIB(part, band);
        }
        drawn = spt_Win9xBlend(part);
    }
    return drawn;
}

} // namespace pixkit
