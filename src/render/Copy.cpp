// Copies of the image, also at another size.
#include "gdiplus/cGDIPlus.h"
#include "render/DrawJob.h"
#include "render/GdiplusPath.h"
#include "surface/attempt.h"
#include <algorithm>
#include <utility>

namespace pixkit {

void cPixSheet::CopyImageTo(cPixSheet& cDIBclass, std::int32_t newWidth, std::int32_t newHeight,
                            bool CopyOriginalFormat) noexcept {
    const Call call(*this, "CopyImageTo", "newWidth, newHeight, CopyOriginalFormat", newWidth, newHeight,
                    CopyOriginalFormat);
    attempt(call, [&] {
        if (state().m_Handle == 0) return refused(noImage);
        return &cDIBclass == this ? done() : state().pvCopyImage(cDIBclass, newWidth, newHeight, CopyOriginalFormat);
    });
}

void cPixSheet::CopyImageTo(std::unique_ptr<cPixSheet>& cDIBclass, std::int32_t newWidth, std::int32_t newHeight,
                            bool CopyOriginalFormat) noexcept {
    const Call call(*this, "CopyImageTo", "newWidth, newHeight, CopyOriginalFormat", newWidth, newHeight,
                    CopyOriginalFormat);
    attempt(call, [&] {
        if (state().m_Handle == 0) return refused(noImage);
        if (!cDIBclass) {
            auto created = std::make_unique<cPixSheet>();
            created->isGDIplusEnabled(isGDIplusEnabled());
            created->state().m_StretchQuality = state().m_StretchQuality;
            created->state().m_isUnattended = state().m_isUnattended;
            created->state().m_limits = state().m_limits;
            cDIBclass = std::move(created);
        }
        return cDIBclass.get() == this ? done()
                                       : state().pvCopyImage(*cDIBclass, newWidth, newHeight, CopyOriginalFormat);
    });
}

Outcome SheetState::pvCopyImage(cPixSheet& target, std::int32_t newWidth, std::int32_t newHeight,
                                bool CopyOriginalFormat) const {
    SheetState& host = HostAccess::state(target);
    if (newWidth == 0) newWidth = m_Width;
    if (newHeight == 0) newHeight = m_Height;
    target.gdiToken(m_GDItoken);
    if (host.m_Handle == 0 || host.m_Width != newWidth || host.m_Height != newHeight) {
        if (!target.InitializeDIB(newWidth, newHeight)) return host.m_outcome;
    }
    host.m_hotspot = {static_cast<std::int32_t>(std::int64_t{m_hotspot.x} * host.m_Width / m_Width),
                      static_cast<std::int32_t>(std::int64_t{m_hotspot.y} * host.m_Height / m_Height)};
    const ConstPixelView image = pvPixels(true);
    if (host.m_Width == m_Width && host.m_Height == m_Height) {
        std::ranges::copy(image.bytes(), HostAccess::pixels(target).bits);
    } else {
        target.EraseDIB(); // what the target held before must not shine through, nor pass for a copy
        // Without the system's AlphaBlend: the same pixels everywhere where GDI+ does not interpolate.
        DrawJob job = {.image = image,
                       .source = image.rect(),
                       .destHostDIB = &target,
                       .destination = HostAccess::pixels(target).rect(),
                       .HighQuality = m_StretchQuality};
        const auto cGDIp = m_StretchQuality ? pvGDIplus() : nullptr;
        if (!cGDIp || !spt_RenderGDIplus(job, *cGDIp)) {
            if (Outcome drawn = spt_DrawInSoftware(job); !drawn) return drawn;
        }
    }
    host.m_AlphaImage = m_AlphaImage;
    host.m_Format = m_Format;
    host.pvTakeNotes(*this);
    if (CopyOriginalFormat) host.m_ImageByteCache = m_ImageByteCache;
    return done();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
