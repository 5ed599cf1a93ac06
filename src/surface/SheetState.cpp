// The pixel store: how an image comes, goes, changes hands, and gets into a device context.
#include "surface/SheetState.h"
#include "platform/gdi.h"
#include "shared/checked.h"
#include <utility>

namespace pixkit {

namespace {
constexpr Reason sizeOfNothing = "a width or height of 0";
}

Outcome SheetState::pvInitializeDIB(std::int32_t Width, std::int32_t Height) noexcept {
    pvDestroyDIB(); // even when the new size turns out to be impossible
    if (Width < 0) return refused("the width is negative");
    if (Height == 0) return refused(sizeOfNothing);
    const std::int64_t rows = Height < 0 ? -std::int64_t{Height} : std::int64_t{Height};
    const auto height = toLong(rows);
    const auto pixels = height ? checkedMultiply(Width, *height) : std::nullopt;
    const auto sizeImage = pixels ? checkedMultiply(*pixels, 4) : std::nullopt;
    if (!sizeImage) return refused(beyondAnyImage);
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

void SheetState::pvDestroyDIB() noexcept {
    m_GDIplus.reset();
    if (m_hDC != 0) {
        if (m_prevDCobject != 0) platform::SelectObject(m_hDC, m_prevDCobject);
        platform::DeleteObject(m_hDC); // not DeleteDC: the system frees a memory DC either way, and this way is kept
        m_hDC = 0;
        m_prevDCobject = 0;
    }
    if (m_Handle != 0) platform::DeleteObject(m_Handle);
    pvTakeImage(0, nullptr, 0, 0, imgError, AlphaNone, {}, {});
}

void SheetState::pvTakeImage(std::intptr_t handle, std::uint8_t* pointer, std::int32_t width, std::int32_t height,
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

void SheetState::pvForgetFile() noexcept {
    m_notes = {};
    m_PNGprops.loaded(nullptr);
}

void SheetState::pvTakeNotes(const SheetState& source) noexcept {
    m_notes = source.m_notes;
    m_PNGprops.loaded(source.m_PNGprops.loaded());
}

std::intptr_t SheetState::pvLoadDIBinDC(bool bLoad) noexcept {
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

bool SheetState::pvOverlapsStore(const ByteArray& array) const noexcept {
    return overlap(pvPixels(true).bytes(), array.bytes());
}

// --- exchange

namespace {

// Takes an image out of its device context for as long as it changes hands: a bitmap can be in one context only. An
// image that was in one is there again afterwards, or the one that came in its place.
class Deselection {
  public:
    explicit Deselection(SheetState& sheet) noexcept : m_sheet(sheet.m_prevDCobject != 0 ? &sheet : nullptr) {
        if (m_sheet != nullptr) m_sheet->pvLoadDIBinDC(false);
    }
    ~Deselection() {
        if (m_sheet != nullptr) m_sheet->pvLoadDIBinDC(true);
    }
    Deselection(const Deselection&) = delete;
    Deselection& operator=(const Deselection&) = delete;

  private:
    SheetState* m_sheet;
};

} // namespace

void SheetState::pvSwapDIBs(SheetState& other) noexcept {
    m_GDIplus.reset();
    other.m_GDIplus.reset();
    const Deselection own(*this);
    const Deselection others(other);
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

void SheetState::pvReplaceImage(SheetState& successor, CursorHotspot hotspot) noexcept {
    successor.m_AlphaImage = m_AlphaImage;
    successor.m_Format = m_Format;
    successor.m_ImageByteCache = std::move(m_ImageByteCache);
    successor.m_hotspot = hotspot;
    successor.pvTakeNotes(*this);
    pvSwapDIBs(successor);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
