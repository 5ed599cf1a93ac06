#include "render/GdiplusPath.h"
#include "gdiplus/cGDIPlus.h"
#include "kernels/kernels.h"
#include "render/PixelBuffer.h"
#include "render/PixelWorkers.h"
#include "shared/Colors.h"
#include "surface/HostAccess.h"
#include <cmath>
#include <cstring>

namespace pixkit {

namespace {

// Gray and lightness of the job's source. One colour matrix could not do both: it would not hold the lightness at its
// limits before it makes gray of it.
void applyTone(DrawJob& job, PixelBuffer& toned) {
    const ConstPixelView source = job.image.part(job.source);
    toned = PixelBuffer(source.width, source.height);
    const PixelView pixels = toned.view();
    if (job.LightAdjustment != 0.0F) {
        spt_LightenDarken(job.LightAdjustment, pixels, source);
    } else {
        for (std::size_t y = 0; y < source.height; ++y)
            std::memcpy(pixels.row(y), source.row(y), source.width * 4);
    }
    if (job.grayScale != gsclNone) {
        for (std::size_t y = 0; y < pixels.height; ++y)
            kernels::table().grayscale(pixels.row(y), pixels.width, iparseGrayScaleRatios(job.grayScale));
    }
    job.image = pixels;
    job.source = pixels.rect();
}

} // namespace

bool spt_RenderGDIplus(DrawJob job, cGDIPlus& cGDIp) {
    if (!job.findLimits()) return false;
    const Rect visible = job.visible();
    if (job.Angle == 0.0F) {
        if (visible.isEmpty()) return false;
        if (!job.isStretching() && !job.isMirroring()) { // nothing is worked out that nobody sees
            job.source = visible.moved(job.source.left - job.destination.left, job.source.top - job.destination.top);
            job.destination = visible;
        }
    }
    GdiplusDrawing drawing = {.pixels = job.image.part(job.source),
                              .host = job.destHostDIB != nullptr ? HostAccess::pixels(*job.destHostDIB) : PixelView(),
                              .destinationDC = job.destinationDC,
                              .destination = job.destination,
                              .HighQuality = job.HighQuality,
                              .Angle = std::fmod(job.Angle, 360.0F),
                              .globalAlpha = job.globalAlpha};
    const bool isToned = job.grayScale != gsclNone || job.LightAdjustment != 0.0F;
    if (!job.isMirroring() && !isToned) return cGDIp.RenderGDIplus(drawing);
    if (!cGDIp.canRender(drawing)) return false; // before pixels are prepared for it
    PixelBuffer aMirrorBytes;
    PixelBuffer toned;
    if (job.isMirroring()) spt_MirrorDIB(job, aMirrorBytes);
    if (isToned) applyTone(job, toned);
    drawing.pixels = job.image.part(job.source);
    return cGDIp.RenderGDIplus(drawing);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
