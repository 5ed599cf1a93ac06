// The image at another size, and which size fits where.
#include "render/PixelWorkers.h"
#include "render/Resampler.h"
#include "shared/AlphaType.h"
#include "shared/Resampling.h"
#include "shared/ScaledSize.h"
#include "shared/checked.h"
#include "surface/attempt.h"
#include <cstdlib>
#include <tuple>

namespace pixkit {

namespace {

// Fills `resized` with the image, mirrored where a new size is negative. A mirrored copy at the image's own size is
// exact: interpolation, which moves rows, is for other sizes alone.
void fillResized(PixelView resized, ConstPixelView image, bool mirrorsColumns, bool mirrorsRows, bool HighQuality) {
    if (!mirrorsColumns && !mirrorsRows) {
        spt_pvResize(resized, image, HighQuality);
    } else if (resized.width == image.width && resized.height == image.height) {
        spt_MirrorDIB(resized, image, mirrorsColumns, mirrorsRows);
    } else {
        PixelBuffer aMirrorBytes(image.width, image.height);
        spt_MirrorDIB(aMirrorBytes.view(), image, mirrorsColumns, mirrorsRows);
        spt_pvResize(resized, aMirrorBytes.view(), HighQuality);
    }
}

// Where a point of the image goes when that is resized, and mirrored for a negative size.
std::int32_t movedPoint(std::int32_t point, std::int32_t size, std::int32_t newSize) {
    const auto moved = static_cast<std::int32_t>(point * std::int64_t{std::abs(newSize)} / size);
    return newSize < 0 ? -newSize - 1 - moved : moved;
}

} // namespace

bool cPixSheet::Resize(std::int32_t newWidth, std::int32_t newHeight) noexcept {
    return attempt(Call(*this, "Resize", "newWidth, newHeight", newWidth, newHeight), [&] {
        const ConstPixelView image = HostAccess::pixels(*this);
        if (!image) return refused(noImage);
        if (newWidth == 0) newWidth = state().m_Width;
        if (newHeight == 0) newHeight = state().m_Height;
        if (newWidth == state().m_Width && newHeight == state().m_Height) return done();

        // From here on the image is only read until its successor is complete.
        cPixSheet resized;
        resized.state().m_isUnattended = state().m_isUnattended;
        resized.state().m_limits = state().m_limits;
        if (!resized.InitializeDIB(longOrOverflow(std::abs(std::int64_t{newWidth})), newHeight))
            return resized.state().m_outcome;
        fillResized(HostAccess::pixels(resized), image, newWidth < 0, newHeight < 0, state().m_StretchQuality);
        state().pvReplaceImage(resized.state(), {movedPoint(state().m_hotspot.x, state().m_Width, newWidth),
                                                 movedPoint(state().m_hotspot.y, state().m_Height, newHeight)});
        return done();
    });
}

bool cPixSheet::Resample(std::int32_t newWidth, std::int32_t newHeight, std::int32_t Filter,
                         cPixSheet* destHostDIB) noexcept {
    const Call call(*this, "Resample", "newWidth, newHeight, Filter", newWidth, newHeight, Filter);
    return attempt(call, [&] {
        const ConstPixelView image = HostAccess::pixels(*this);
        if (!image) return refused(noImage);
        if (Filter < resampleAuto || Filter > resampleLanczos3) return refused("there is no such filter");
        cPixSheet& target = destHostDIB != nullptr ? *destHostDIB : *this;
        if (newWidth == 0) newWidth = state().m_Width;
        if (newHeight == 0) newHeight = state().m_Height;
        if (newWidth == state().m_Width && newHeight == state().m_Height && &target == this) return done();

        // Both are left as they are until their successor is complete.
        cPixSheet resampled;
        resampled.state().m_isUnattended = state().m_isUnattended;
        resampled.state().m_limits = target.state().m_limits;
        if (!resampled.InitializeDIB(longOrOverflow(std::abs(std::int64_t{newWidth})), newHeight))
            return resampled.state().m_outcome;
        const auto filter = static_cast<eResampleFilters>(Filter);
        const PixelView pixels = HostAccess::pixels(resampled);
        resample(pixels, image, {filter, filter, newWidth < 0, newHeight < 0, state().m_AlphaImage == AlphaNone});
        const bool isSimple = state().m_AlphaImage == AlphaSimple && alphaTypeOf(pixels) != AlphaComplex;
        const AlphaTypeEnum alpha =
            state().m_AlphaImage == AlphaSimple && !isSimple ? AlphaComplex : state().m_AlphaImage;
        const CursorHotspot hotspot = {movedPoint(state().m_hotspot.x, state().m_Width, newWidth),
                                       movedPoint(state().m_hotspot.y, state().m_Height, newHeight)};
        if (&target == this) {
            state().pvReplaceImage(resampled.state(), hotspot);
        } else {
            resampled.state().m_Format = state().m_Format;
            resampled.state().m_hotspot = hotspot;
            target.SwapDIBs(&resampled);
        }
        target.state().m_AlphaImage = alpha;
        return done();
    });
}

void cPixSheet::ScaleImage(std::int32_t destWidth, std::int32_t destHeight, std::int32_t& newWidth,
                           std::int32_t& newHeight, std::int32_t ScaleMode) const noexcept {
    const Call call(*this, "ScaleImage", "destWidth, destHeight, newWidth, newHeight, ScaleMode", destWidth, destHeight,
                    newWidth, newHeight, ScaleMode);
    attempt(call, [&] {
        if (state().m_Handle == 0) return refused(noImage);
        std::tie(newWidth, newHeight) = scaledSize(state().m_Width, state().m_Height, destWidth, destHeight, ScaleMode);
        return done();
    });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
