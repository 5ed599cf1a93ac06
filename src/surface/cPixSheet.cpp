// Lifecycle of the pixel store: creation, destruction, selection into a device context, exchange.
#include "surface/cPixSheet.h"
#include "platform/gdi.h"
#include "shared/checked.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include <cstring>
#include <utility>

namespace pixkit {

cPixSheet::cPixSheet() noexcept : m_osCAP(osCapabilities(platform::GetVersionExA())) {
    isGDIplusEnabled(true);
    if (isGDIplusEnabled()) m_StretchQuality = true;
}

cPixSheet::~cPixSheet() {
    DestroyDIB();
}

namespace {
constexpr Reason sizeOfNothing = "a width or height of 0";
}

bool cPixSheet::InitializeDIB(std::int32_t Width, std::int32_t Height) noexcept {
    m_outcome = pvInitializeDIB(Width, Height);
    return static_cast<bool>(m_outcome);
}

Outcome cPixSheet::pvInitializeDIB(std::int32_t Width, std::int32_t Height) noexcept {
    DestroyDIB(); // even when the new size turns out to be impossible
    if (Width < 0) return refused("the width is negative");
    if (Height == 0) return refused(sizeOfNothing);
    const std::int64_t rows = Height < 0 ? -std::int64_t{Height} : std::int64_t{Height};
    const auto height = toLong(rows);
    const auto pixels = height ? checkedMultiply(Width, *height) : std::nullopt;
    const auto sizeImage = pixels ? checkedMultiply(*pixels, 4) : std::nullopt;
    if (!sizeImage) return refused("more pixels than an image can hold");
    if (const Reason limit = m_limits.problem(Width, *height)) return refused(limit);

    platform::BitmapInfoHeader header;
    header.biWidth = Width;
    header.biHeight = *height;
    header.biSizeImage = static_cast<std::uint32_t>(*sizeImage);

    const platform::ScreenDC screen;
    void* bits = nullptr;
    const auto handle = platform::CreateDIBSection(screen.get(), header, &bits);
    if (m_ManageDC && m_hDC == 0) m_hDC = platform::CreateCompatibleDC(screen.get());
    if (handle == 0) return refused(Width == 0 ? sizeOfNothing : noMemoryForPixels);
    // The system clears a new section: it is what EraseDIB leaves, without another pass over it.
    pvTakeImage(handle, static_cast<std::uint8_t*>(bits), Width, *height, imgNone, AlphaSimple, {}, {});
    return done();
}

void cPixSheet::DestroyDIB() noexcept {
    m_GDIplus.reset();
    if (m_hDC != 0) {
        if (m_prevDCobject != 0) platform::SelectObject(m_hDC, m_prevDCobject);
        platform::DeleteObject(m_hDC); // not DeleteDC: the system frees a memory DC either way, and this way is kept
        m_hDC = 0;
        m_prevDCobject = 0;
    }
    if (m_Handle != 0) platform::DeleteObject(m_Handle);
    pvTakeImage(0, nullptr, 0, 0, imgError, AlphaNone, {}, {});
    m_outcome.succeed();
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
    pvForgetFile();
}

// What is said of the file that the image is no longer of.
void cPixSheet::pvForgetFile() noexcept {
    m_notes = {};
    m_PNGprops.loaded(nullptr);
}

// Of the same picture, in whatever instance and size.
void cPixSheet::pvTakeNotes(const cPixSheet& source) noexcept {
    m_notes = source.m_notes;
    m_PNGprops.loaded(source.m_PNGprops.loaded());
}

void cPixSheet::EraseDIB() noexcept {
    m_outcome = doneIf(m_Handle != 0, noImage);
    if (m_Handle == 0) return;
    const PixelView pixels = HostAccess::pixels(*this);
    std::memset(pixels.bits, 0, pixels.stride * pixels.height);
    pvForgetFile();
    m_Format = imgNone;
    m_AlphaImage = AlphaSimple; // an all-transparent image counts as simple transparency
}

std::intptr_t cPixSheet::LoadDIBinDC(bool bLoad) noexcept {
    const std::intptr_t dc = pvLoadDIBinDC(bLoad);
    m_outcome = !bLoad || dc != 0 ? done() : refused(m_Handle == 0 ? noImage : noDeviceContext);
    return dc;
}

std::intptr_t cPixSheet::pvLoadDIBinDC(bool bLoad) noexcept {
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
    return overlap(HostAccess::pixels(*this).bytes(), array.bytes());
}

// --- exchange

namespace {

// Takes an image out of its device context for as long as it changes hands: a bitmap can be in one context only. An
// image that was in one is there again afterwards, or the one that came in its place.
class Deselection {
  public:
    explicit Deselection(cPixSheet& sheet, bool isSelected) noexcept : m_sheet(isSelected ? &sheet : nullptr) {
        if (m_sheet != nullptr) HostAccess::LoadDIBinDC(*m_sheet, false);
    }
    ~Deselection() {
        if (m_sheet != nullptr) HostAccess::LoadDIBinDC(*m_sheet, true);
    }
    Deselection(const Deselection&) = delete;
    Deselection& operator=(const Deselection&) = delete;

  private:
    cPixSheet* m_sheet;
};

} // namespace

void cPixSheet::SwapDIBs(cPixSheet* SwapFromDIB) noexcept {
    m_outcome = doneIf(SwapFromDIB != nullptr, "there is no other object");
    if (SwapFromDIB == nullptr || SwapFromDIB == this) return;
    cPixSheet& other = *SwapFromDIB;
    m_GDIplus.reset();
    other.m_GDIplus.reset();
    const Deselection own(*this, m_prevDCobject != 0);
    const Deselection others(other, other.m_prevDCobject != 0);
    std::swap(m_Handle, other.m_Handle);
    std::swap(m_Pointer, other.m_Pointer);
    std::swap(m_Width, other.m_Width);
    std::swap(m_Height, other.m_Height);
    std::swap(m_Format, other.m_Format);
    std::swap(m_AlphaImage, other.m_AlphaImage);
    std::swap(m_ImageByteCache, other.m_ImageByteCache);
    std::swap(m_hotspot, other.m_hotspot);
    std::swap(m_notes, other.m_notes);
    auto properties = m_PNGprops.loaded();
    m_PNGprops.loaded(other.m_PNGprops.loaded());
    other.m_PNGprops.loaded(std::move(properties));
}

// Puts the same picture in another shape in this one's place. Settings, Tag and PNG properties are the instance's and
// stay, as does an image's being in a device context.
void cPixSheet::pvReplaceImage(cPixSheet& successor, CursorHotspot hotspot) noexcept {
    successor.m_AlphaImage = m_AlphaImage;
    successor.m_Format = m_Format;
    successor.m_ImageByteCache = std::move(m_ImageByteCache);
    successor.m_hotspot = hotspot;
    successor.pvTakeNotes(*this);
    SwapDIBs(&successor);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
