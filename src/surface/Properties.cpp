// The properties of cPixSheet: first those that only hold a value, then those that do more.
#include "diagnostics/guard.h"
#include "gdiplus/cGDIPlus.h"
#include "platform/gdi.h"
#include "shared/cCDECL.h"
#include "shared/checked.h"
#include "shared/version.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include <utility>

namespace pixkit {

AlphaTypeEnum cPixSheet::Alpha() const noexcept {
    return state().m_AlphaImage;
}

void cPixSheet::Alpha(AlphaTypeEnum value) noexcept {
    state().m_AlphaImage = value;
}

std::uint8_t* cPixSheet::BitsPointer() const noexcept {
    return state().m_Pointer;
}

std::intptr_t cPixSheet::Handle() const noexcept {
    return state().m_Handle;
}

std::int32_t cPixSheet::Width() const noexcept {
    return state().m_Width;
}

std::int32_t cPixSheet::Height() const noexcept {
    return state().m_Height;
}

eImageFormat cPixSheet::ImageType() const noexcept {
    return state().m_Format;
}

bool cPixSheet::HighQualityInterpolation() const noexcept {
    return state().m_StretchQuality;
}

void cPixSheet::HighQualityInterpolation(bool value) noexcept {
    state().m_StretchQuality = value;
}

bool cPixSheet::ManageOwnDC() const noexcept {
    return state().m_ManageDC;
}

std::int32_t cPixSheet::gdiToken() const noexcept {
    return state().m_GDItoken;
}

bool cPixSheet::KeepGDIplusActive() const noexcept {
    return state().m_KeepGDIplusActive;
}

const std::any& cPixSheet::Tag() const noexcept {
    return state().m_Tag;
}

void cPixSheet::Tag(std::any value) noexcept {
    state().m_Tag = std::move(value);
}

std::string_view cPixSheet::LastErrorText() const noexcept {
    return state().m_outcome.reason();
}

bool cPixSheet::Unattended() const noexcept {
    return state().m_isUnattended;
}

void cPixSheet::Unattended(bool value) noexcept {
    state().m_isUnattended = value;
}

double cPixSheet::MaxPixels() const noexcept {
    return state().m_limits.pixels;
}

void cPixSheet::MaxPixels(double value) noexcept {
    Limits::set(state().m_limits.pixels, value);
}

double cPixSheet::MaxMemory() const noexcept {
    return state().m_limits.memory;
}

void cPixSheet::MaxMemory(double value) noexcept {
    Limits::set(state().m_limits.memory, value);
}

std::int32_t cPixSheet::Orientation() const noexcept {
    return state().m_notes.orientation;
}

// ---

std::int32_t cPixSheet::scanWidth() const noexcept {
    return checkedMultiply(state().m_Width, 4).value_or(0);
}

void cPixSheet::ManageOwnDC(bool value) noexcept {
    if (!value && state().m_hDC != 0) {
        if (state().m_Handle != 0 && state().m_prevDCobject != 0) {
            platform::SelectObject(state().m_hDC, state().m_prevDCobject);
            state().m_prevDCobject = 0;
        }
        platform::DeleteDC(state().m_hDC);
        state().m_hDC = 0;
    } else if (value && state().m_hDC == 0 && state().m_Handle != 0) {
        state().m_hDC = platform::CreateCompatibleDC(platform::ScreenDC().get());
    }
    state().m_ManageDC = value;
}

bool cPixSheet::isAlphaBlendFriendly() const noexcept {
    return (state().m_osCAP & capUseAlphaBlend) != 0;
}

void cPixSheet::isAlphaBlendFriendly(bool value) noexcept {
    if (!value) {
        state().m_osCAP &= ~std::uint32_t{capUseAlphaBlend};
    } else if ((state().m_osCAP & (capAlphaBlendReliable | capAlphaBlendUntrusted)) != 0) {
        state().m_osCAP |= capUseAlphaBlend;
    }
}

bool cPixSheet::isGDIplusEnabled() const noexcept {
    return state().pvUsesGDIplus();
}

void cPixSheet::isGDIplusEnabled(bool value) noexcept {
    state().m_osCAP = enableGdiPlus(state().m_osCAP, value, [] { return cGDIPlus::isGDIplusOk(); });
    state().pvJoinGDIplus();
}

void cPixSheet::gdiToken(std::int32_t value) noexcept {
    if (state().m_KeepGDIplusActive) state().m_GDIplus.reset();
    state().m_GDItoken = value;
}

void cPixSheet::KeepGDIplusActive(bool value) noexcept {
    state().m_KeepGDIplusActive = value && isGDIplusEnabled();
    if (!value) state().m_GDIplus.reset();
}

bool cPixSheet::isZlibEnabled() const noexcept {
    return iparseValidateDLL("zlib1.dll", "crc32") || iparseValidateDLL("zlib.dll", "crc32");
}

std::string cPixSheet::LoadNotes() const noexcept {
    return guarded(Call(*this, "LoadNotes"), std::string(), [&] { return state().m_notes.text(); });
}

std::string cPixSheet::Version() const noexcept {
    return guarded(Call(*this, "Version"), std::string(), [] { return std::string(PIXKIT_FULL_VERSION); });
}

// --- GDI+, for all that draws, loads and saves

bool SheetState::pvUsesGDIplus() const noexcept {
    return (m_osCAP & capGdiPlusOn) != 0;
}

void SheetState::pvJoinGDIplus() noexcept {
    if (!pvUsesGDIplus()) {
        m_GDIplusUser.reset();
    } else if (!m_GDIplusUser) {
        m_GDIplusUser.emplace();
    }
}

std::shared_ptr<cGDIPlus> SheetState::pvGDIplus() const {
    if (!pvUsesGDIplus()) return nullptr;
    return m_GDIplus ? m_GDIplus : std::make_shared<cGDIPlus>();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
