// What an instance of cPixSheet holds, and what its members do with that among themselves. The public header only has
// room for it, so that programs need not be compiled anew when variables come or go.
#pragma once
#include "diagnostics/Outcome.h"
#include "gdiplus/GdiplusUser.h"
#include "platform/gdi.h"
#include "shared/ByteArray.h"
#include "shared/PixelView.h"
#include "surface/Limits.h"
#include "surface/PictureNotes.h"
#include "surface/PngProperties.h"
#include "surface/cPixSheet.h"
#include <any>
#include <cstdint>
#include <memory>
#include <new>
#include <optional>

namespace pixkit {

class cGDIPlus;
struct DrawJob;

struct SheetState {
    // --- the image (surface/SheetState.cpp)

    // As the public members, but of no effect on LastErrorText.
    Outcome pvInitializeDIB(std::int32_t Width, std::int32_t Height) noexcept;
    void pvDestroyDIB() noexcept;
    std::intptr_t pvLoadDIBinDC(bool bLoad) noexcept;
    void pvSwapDIBs(SheetState& other) noexcept;
    // Takes an image over, or none; what was held before is its caller's.
    void pvTakeImage(std::intptr_t handle, std::uint8_t* pointer, std::int32_t width, std::int32_t height,
                     eImageFormat format, AlphaTypeEnum alpha, ByteArray&& cache, CursorHotspot hotspot) noexcept;
    // Puts the same picture in another shape in this one's place. Settings, Tag and PNG properties are the instance's
    // and stay, as does an image's being in a device context.
    void pvReplaceImage(SheetState& successor, CursorHotspot hotspot) noexcept;
    // Ends what is said of the file that the image is no longer of.
    void pvForgetFile() noexcept;
    // All that is said of the source's file goes for this image, too: it is of the same picture, in whatever size.
    void pvTakeNotes(const SheetState& source) noexcept;
    // The pixels, an empty view without an image. Waits for what was drawn on them to arrive, if asked to.
    PixelView pvPixels(bool waits) const noexcept {
        if (m_Pointer == nullptr) return {};
        if (waits) platform::GdiFlush();
        const auto width = static_cast<std::size_t>(m_Width);
        return {m_Pointer, width, static_cast<std::size_t>(m_Height), width * 4};
    }
    // Whether an array lies over the pixel store: callers overlay arrays on BitsPointer.
    bool pvOverlapsStore(const ByteArray& array) const noexcept;

    // --- copies and drawing (render/Copy.cpp, Render.cpp)

    Outcome pvCopyImage(cPixSheet& target, std::int32_t newWidth, std::int32_t newHeight,
                        bool CopyOriginalFormat) const;
    bool pvCanUseAlphaBlend(const DrawJob& job) const noexcept;
    Outcome pvAlphaBlend(const DrawJob& job);
    // False, with nothing drawn, also where GDI+ is not enabled.
    bool pvRenderGDIplus(const DrawJob& job);

    // --- GDI+ (surface/Properties.cpp)

    bool pvUsesGDIplus() const noexcept;
    // Has GDI+ stay started, or not, as the flag says.
    void pvJoinGDIplus() noexcept;
    // The bridge for one call: the one that is kept, else a new one; null where GDI+ is not enabled. May throw.
    std::shared_ptr<cGDIPlus> pvGDIplus() const;

    // While GDI+ is enabled. Before the bridge, which goes first.
    std::optional<GdiplusUser> m_GDIplusUser;
    std::shared_ptr<cGDIPlus> m_GDIplus; // only with KeepGDIplusActive
    std::any m_Tag;
    bool m_StretchQuality = false;
    bool m_ManageDC = false;
    bool m_KeepGDIplusActive = false;
    std::intptr_t m_Handle = 0;
    std::uint8_t* m_Pointer = nullptr;
    std::int32_t m_Height = 0;
    std::int32_t m_Width = 0;
    std::intptr_t m_hDC = 0;
    std::intptr_t m_prevDCobject = 0; // what m_hDC held before the DIB; 0 = the DIB is not selected
    std::int32_t m_GDItoken = 0;
    ByteArray m_ImageByteCache;       // source bytes kept by a load with SaveFormat
    std::uint32_t m_osCAP = 0;        // surface/Capabilities.h
    eImageFormat m_Format = imgError; // a fresh instance says imgError; only an empty image says imgNone
    AlphaTypeEnum m_AlphaImage = AlphaNone;
    PngProperties m_PNGprops;
    CursorHotspot m_hotspot; // of an image that was a cursor, which a cursor file gets again
    PictureNotes m_notes;
    mutable Outcome m_outcome; // of the last call
    bool m_isUnattended = false;
    Limits m_limits;
    std::int32_t m_leastWidth = 0, m_leastHeight = 0; // HostAccess::leastSize
};

inline SheetState& cPixSheet::state() noexcept {
    return *std::launder(reinterpret_cast<SheetState*>(m_state));
}
inline const SheetState& cPixSheet::state() const noexcept {
    return *std::launder(reinterpret_cast<const SheetState*>(m_state));
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
