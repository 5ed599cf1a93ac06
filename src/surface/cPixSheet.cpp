// Lifecycle of the pixel store: creation, destruction, selection into a device context, copies and exchange.
#include "surface/cPixSheet.h"
#include "diagnostics/guard.h"
#include "platform/gdi.h"
#include "shared/checked.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include <cstring>
#include <functional>
#include <utility>

namespace pixkit {

cPixSheet::cPixSheet() noexcept : m_osCAP(osCapabilities(platform::GetVersionExA())) {
    isGDIplusEnabled(true);
    if (isGDIplusEnabled()) m_StretchQuality = true;
}

cPixSheet::~cPixSheet() {
    DestroyDIB();
}

bool cPixSheet::InitializeDIB(std::int32_t Width, std::int32_t Height) noexcept {
    DestroyDIB(); // even when the new size turns out to be impossible
    if (Width < 0 || Height == 0) return false;
    const std::int64_t rows = Height < 0 ? -std::int64_t{Height} : std::int64_t{Height};
    const auto height = toLong(rows);
    const auto pixels = height ? checkedMultiply(Width, *height) : std::nullopt;
    const auto sizeImage = pixels ? checkedMultiply(*pixels, 4) : std::nullopt;
    if (!sizeImage) return false;

    platform::BitmapInfoHeader header;
    header.biWidth = Width;
    header.biHeight = *height;
    header.biSizeImage = static_cast<std::uint32_t>(*sizeImage);

    const platform::ScreenDC screen;
    void* bits = nullptr;
    const auto handle = platform::CreateDIBSection(screen.get(), header, &bits);
    if (m_ManageDC && m_hDC == 0) m_hDC = platform::CreateCompatibleDC(screen.get());
    if (handle == 0) return false;
    // A fresh section is all zero, which is what EraseDIB would write: an erased image.
    pvTakeImage(handle, static_cast<std::uint8_t*>(bits), Width, *height, imgNone, AlphaSimple, {}, {});
    return true;
}

void cPixSheet::DestroyDIB() noexcept {
    if (m_hDC != 0) {
        if (m_prevDCobject != 0) platform::SelectObject(m_hDC, m_prevDCobject);
        platform::DeleteObject(m_hDC); // not DeleteDC: the system frees a memory DC either way, and this way is kept
        m_hDC = 0;
        m_prevDCobject = 0;
    }
    if (m_Handle != 0) platform::DeleteObject(m_Handle);
    pvTakeImage(0, nullptr, 0, 0, imgError, AlphaNone, {}, {});
}

void cPixSheet::pvTakeImage(std::intptr_t handle, std::uint8_t* pointer, std::int32_t width, std::int32_t height,
                            eImageFormat format, AlphaTypeEnum alpha, ByteArray&& cache,
                            CursorHotspot hotspot) noexcept {
    m_Handle = handle;
    m_Pointer = pointer;
    m_Width = width;
    m_Height = height;
    m_Format = format;
    m_AlphaImage = alpha;
    m_ImageByteCache = std::move(cache);
    m_hotspot = hotspot;
}

void cPixSheet::EraseDIB() noexcept {
    if (m_Handle == 0) return;
    std::memset(m_Pointer, 0, static_cast<std::size_t>(m_Width) * static_cast<std::size_t>(m_Height) * 4);
    m_Format = imgNone;
    m_AlphaImage = AlphaSimple; // an all-transparent image counts as simple transparency
}

std::intptr_t cPixSheet::LoadDIBinDC(bool bLoad) noexcept {
    if (!bLoad) {
        if (m_prevDCobject != 0) {
            platform::SelectObject(m_hDC, m_prevDCobject);
            m_prevDCobject = 0;
            if (!m_ManageDC) {
                platform::DeleteObject(m_hDC);
                m_hDC = 0;
            }
        }
        return 0;
    }
    if (m_Handle == 0) return 0;
    if (m_hDC == 0) m_hDC = platform::CreateCompatibleDC(platform::ScreenDC().get());
    if (m_prevDCobject == 0) m_prevDCobject = platform::SelectObject(m_hDC, m_Handle);
    if (m_prevDCobject != 0) return m_hDC;
    if (!m_ManageDC && m_hDC != 0) {
        platform::DeleteObject(m_hDC);
        m_hDC = 0;
    }
    return 0;
}

// Whether an array lies over the pixel store: callers overlay arrays on BitsPointer.
bool cPixSheet::pvOverlapsStore(const ByteArray& array) const noexcept {
    const ConstPixelView image = HostAccess::pixels(*this);
    const std::less<const std::uint8_t*> before;
    return image && array.size() != 0 && before(array.data(), image.bits + image.stride * image.height) &&
           before(image.bits, array.data() + array.size());
}

// --- copies

void cPixSheet::CopyImageTo(cPixSheet& cDIBclass, std::int32_t newWidth, std::int32_t newHeight,
                            bool CopyOriginalFormat) noexcept {
    if (m_Handle == 0 || &cDIBclass == this) return;
    guarded("CopyImageTo", false, [&] {
        pvCopyImage(cDIBclass, newWidth, newHeight, CopyOriginalFormat);
        return true;
    });
}

void cPixSheet::CopyImageTo(std::unique_ptr<cPixSheet>& cDIBclass, std::int32_t newWidth, std::int32_t newHeight,
                            bool CopyOriginalFormat) noexcept {
    if (m_Handle == 0) return;
    guarded("CopyImageTo", false, [&] {
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

void cPixSheet::pvCopyImage(cPixSheet& target, std::int32_t newWidth, std::int32_t newHeight, bool CopyOriginalFormat) {
    if (newWidth == 0) newWidth = m_Width;
    if (newHeight == 0) newHeight = m_Height;
    target.gdiToken(m_GDItoken);
    if (target.m_Handle == 0 || target.m_Width != newWidth || target.m_Height != newHeight) {
        if (!target.InitializeDIB(newWidth, newHeight)) return;
    }
    target.m_hotspot = {static_cast<std::int32_t>(std::int64_t{m_hotspot.x} * target.m_Width / m_Width),
                        static_cast<std::int32_t>(std::int64_t{m_hotspot.y} * target.m_Height / m_Height)};
    if (target.m_Width == m_Width && target.m_Height == m_Height) {
        std::memcpy(target.m_Pointer, m_Pointer,
                    static_cast<std::size_t>(m_Width) * static_cast<std::size_t>(m_Height) * 4);
    } else {
        target.EraseDIB(); // what the target held before must not shine through, nor pass for a copy
        const bool usedAlphaBlend = isAlphaBlendFriendly();
        isAlphaBlendFriendly(false); // the same pixels on every system
        // Render takes the target out of its device context; one that was in it stays in the same.
        const bool wasSelected = target.m_prevDCobject != 0;
        const bool managesDC = std::exchange(target.m_ManageDC, target.m_ManageDC || wasSelected);
        const bool isDrawn =
            Render(0, 0, 0, target.m_Width, target.m_Height, 0, 0, m_Width, m_Height, 100, true, false, &target);
        if (wasSelected) target.LoadDIBinDC(true);
        target.m_ManageDC = managesDC;
        isAlphaBlendFriendly(usedAlphaBlend);
        if (!isDrawn) return;
    }
    target.m_AlphaImage = m_AlphaImage;
    target.m_Format = m_Format;
    if (CopyOriginalFormat) HostAccess::SetOriginalFormat(target, m_ImageByteCache);
}

// --- exchange

void cPixSheet::SwapDIBs(cPixSheet* SwapFromDIB) noexcept {
    if (SwapFromDIB == nullptr) return;
    const bool wasSelected = m_prevDCobject != 0;
    if (wasSelected) LoadDIBinDC(false);

    cPixSheet& other = *SwapFromDIB;
    if (other.m_Width >= 0) {
        // First call: keep what the other side has, say by a complemented width that the call to it is the reply, and
        // let it take ours before we take its former values.
        const auto handle = other.m_Handle;
        auto* const pointer = other.m_Pointer;
        const auto width = other.m_Width;
        const auto height = other.m_Height;
        const auto format = other.m_Format;
        const auto alpha = other.m_AlphaImage;
        const auto hotspot = other.m_hotspot;
        ByteArray cache = std::move(other.m_ImageByteCache);
        m_Width = ~m_Width;
        other.SwapDIBs(this);
        pvTakeImage(handle, pointer, width, height, format, alpha, std::move(cache), hotspot);
    } else {
        pvTakeImage(other.m_Handle, other.m_Pointer, ~other.m_Width, other.m_Height, other.m_Format, other.m_AlphaImage,
                    std::move(other.m_ImageByteCache), other.m_hotspot);
    }
    if (wasSelected) LoadDIBinDC(true);
}

} // namespace pixkit
