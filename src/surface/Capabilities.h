// What the machine can do, as data: computed once per instance from the operating-system version.
#pragma once
#include "platform/system.h"
#include <cstdint>

namespace pixkit {

// The flags of cPixSheet's m_osCAP.
enum Capability : std::uint32_t {
    capUseAlphaBlend = 1,        // the system AlphaBlend is used for drawing (isAlphaBlendFriendly)
    capGdiPlusOn = 2,            // GDI+ is enabled and usable (isGDIplusEnabled)
    capAlphaBlendReliable = 8,   // NT family, version 5 or later
    capAlphaBlendUntrusted = 16, // Windows 98/ME: exists, but only used when the caller says so
    capNoGdiPlus = 32,           // Windows 95, or NT before service pack 6
    capNtFamily = 64,
};

// The flags before GDI+ has been asked for.
constexpr std::uint32_t osCapabilities(const platform::OsVersion& version) noexcept {
    if (version.dwPlatformId == 1) {
        return version.dwMinorVersion != 0 ? capAlphaBlendUntrusted : capNoGdiPlus;
    }
    if (version.dwMajorVersion >= 5) return capNtFamily | capAlphaBlendReliable | capUseAlphaBlend;
    return capNtFamily | (version.wServicePackMajor < 6 ? std::uint32_t{capNoGdiPlus} : 0U);
}

// The flags after isGDIplusEnabled was set to `enable`. GDI+ is only asked (`gdiPlusStarts`) on a change to true and
// where the system may have it.
template <class Probe>
constexpr std::uint32_t enableGdiPlus(std::uint32_t flags, bool enable, Probe&& gdiPlusStarts) {
    if (((flags & capGdiPlusOn) != 0) == enable) return flags;
    flags &= ~std::uint32_t{capGdiPlusOn};
    if (enable && (flags & capNoGdiPlus) == 0 && gdiPlusStarts()) flags |= capGdiPlusOn;
    return flags;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
