// The properties of cPixSheet that do more than hold a value.
#include "diagnostics/guard.h"
#include "gdiplus/cGDIPlus.h"
#include "platform/gdi.h"
#include "shared/cCDECL.h"
#include "shared/checked.h"
#include "shared/version.h"
#include "surface/Capabilities.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"

namespace pixkit {

std::int32_t cPixSheet::scanWidth() const noexcept {
    return checkedMultiply(m_Width, 4).value_or(0);
}

void cPixSheet::ManageOwnDC(bool value) noexcept {
    if (!value && m_hDC != 0) {
        if (m_Handle != 0 && m_prevDCobject != 0) {
            platform::SelectObject(m_hDC, m_prevDCobject);
            m_prevDCobject = 0;
        }
        platform::DeleteDC(m_hDC);
        m_hDC = 0;
    } else if (value && m_hDC == 0 && m_Handle != 0) {
        m_hDC = platform::CreateCompatibleDC(platform::ScreenDC().get());
    }
    m_ManageDC = value;
}

bool cPixSheet::isAlphaBlendFriendly() const noexcept {
    return (m_osCAP & capUseAlphaBlend) != 0;
}

void cPixSheet::isAlphaBlendFriendly(bool value) noexcept {
    if (!value) {
        m_osCAP &= ~std::uint32_t{capUseAlphaBlend};
    } else if ((m_osCAP & (capAlphaBlendReliable | capAlphaBlendUntrusted)) != 0) {
        m_osCAP |= capUseAlphaBlend;
    }
}

bool cPixSheet::isGDIplusEnabled() const noexcept {
    return (m_osCAP & capGdiPlusOn) != 0;
}

void cPixSheet::isGDIplusEnabled(bool value) noexcept {
    m_osCAP = enableGdiPlus(m_osCAP, value, [] { return cGDIPlus::isGDIplusOk(); });
    pvJoinGDIplus();
}

// Has GDI+ stay started, or not, as the flag says.
void cPixSheet::pvJoinGDIplus() noexcept {
    if (!isGDIplusEnabled()) {
        m_GDIplusUser.reset();
    } else if (!m_GDIplusUser) {
        m_GDIplusUser.emplace();
    }
}

void cPixSheet::gdiToken(std::int32_t value) noexcept {
    if (m_KeepGDIplusActive) m_GDIplus.reset();
    m_GDItoken = value;
}

void cPixSheet::KeepGDIplusActive(bool value) noexcept {
    m_KeepGDIplusActive = value && isGDIplusEnabled();
    if (!value) m_GDIplus.reset();
}

std::shared_ptr<cGDIPlus> HostAccess::GDIPlus(const cPixSheet& host) {
    if (!host.isGDIplusEnabled()) return nullptr;
    return host.m_GDIplus ? host.m_GDIplus : std::make_shared<cGDIPlus>();
}

bool cPixSheet::isZlibEnabled() const noexcept {
    return iparseValidateDLL("zlib1.dll", "crc32") || iparseValidateDLL("zlib.dll", "crc32");
}

std::string cPixSheet::LoadNotes() const noexcept {
    return guarded(Call(*this, "LoadNotes"), std::string(), [&] { return m_notes.text(); });
}

std::string cPixSheet::Version() const noexcept {
    return guarded(Call(*this, "Version"), std::string(), [] { return std::string(PIXKIT_FULL_VERSION); });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
