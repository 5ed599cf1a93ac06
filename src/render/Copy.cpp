// Copies of the image, also at another size.
#include "diagnostics/guard.h"
#include "render/DrawJob.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <cstring>
#include <utility>

namespace pixkit {

void cPixSheet::CopyImageTo(cPixSheet& cDIBclass, std::int32_t newWidth, std::int32_t newHeight,
                            bool CopyOriginalFormat) noexcept {
    if (m_Handle == 0 || &cDIBclass == this) return;
    const Call call(*this, "CopyImageTo", "newWidth, newHeight, CopyOriginalFormat", newWidth, newHeight,
                    CopyOriginalFormat);
    guarded(call, false, [&] {
        pvCopyImage(cDIBclass, newWidth, newHeight, CopyOriginalFormat);
        return true;
    });
}

void cPixSheet::CopyImageTo(std::unique_ptr<cPixSheet>& cDIBclass, std::int32_t newWidth, std::int32_t newHeight,
                            bool CopyOriginalFormat) noexcept {
    if (m_Handle == 0) return;
    const Call call(*this, "CopyImageTo", "newWidth, newHeight, CopyOriginalFormat", newWidth, newHeight,
                    CopyOriginalFormat);
    guarded(call, false, [&] {
        if (!cDIBclass) {
            auto created = std::make_unique<cPixSheet>();
            created->isGDIplusEnabled(isGDIplusEnabled());
            created->m_StretchQuality = m_StretchQuality;
            cDIBclass = std::move(created);
        }
        if (cDIBclass.get() != this) pvCopyImage(*cDIBclass, newWidth, newHeight, CopyOriginalFormat);
        return true;
    });
}

void cPixSheet::pvCopyImage(cPixSheet& target, std::int32_t newWidth, std::int32_t newHeight,
                            bool CopyOriginalFormat) const {
    if (newWidth == 0) newWidth = m_Width;
    if (newHeight == 0) newHeight = m_Height;
    target.gdiToken(m_GDItoken);
    if (target.m_Handle == 0 || target.m_Width != newWidth || target.m_Height != newHeight) {
        if (!target.InitializeDIB(newWidth, newHeight)) return;
    }
    target.m_hotspot = {static_cast<std::int32_t>(std::int64_t{m_hotspot.x} * target.m_Width / m_Width),
                        static_cast<std::int32_t>(std::int64_t{m_hotspot.y} * target.m_Height / m_Height)};
    const ConstPixelView image = HostAccess::pixels(*this);
    if (target.m_Width == m_Width && target.m_Height == m_Height) {
        std::memcpy(target.m_Pointer, image.bits, image.bytes().size());
    } else {
        target.EraseDIB(); // what the target held before must not shine through, nor pass for a copy
        // Without the system's AlphaBlend: the same pixels everywhere.
        DrawJob job = {.image = image,
                       .source = image.rect(),
                       .destHostDIB = &target,
                       .destination = HostAccess::pixels(target).rect(),
                       .HighQuality = m_StretchQuality};
        if (!spt_DrawInSoftware(job)) return;
    }
    target.m_AlphaImage = m_AlphaImage;
    target.m_Format = m_Format;
    if (CopyOriginalFormat) HostAccess::SetOriginalFormat(target, m_ImageByteCache);
}

} // namespace pixkit
