// What the machine says of itself.
#pragma once
#include <cstdint>

namespace pixkit::platform {

// The fields of OSVERSIONINFOEX that the component decides by.
struct OsVersion {
    std::uint32_t dwPlatformId = 0; // 1 = Windows 95/98/ME, 2 = NT family
    std::uint32_t dwMajorVersion = 0;
    std::uint32_t dwMinorVersion = 0;
    std::uint16_t wServicePackMajor = 0; // 0 where the system only fills the plain OSVERSIONINFO
};

// GetVersionExA: asked with the extended record first and, when that fails, with the plain one. The portable side
// reports an NT-family system of version 4.0 with service pack 6, which has no AlphaBlend, and GDI+ only where somebody
// brings it along.
OsVersion GetVersionExA() noexcept;

// SYSTEMTIME of the local clock.
struct LocalTime {
    std::uint16_t wYear, wMonth, wDay, wHour, wMinute, wSecond;
};
LocalTime GetLocalTime() noexcept;

// Fills `bytes` with what nobody can guess. False when the system has none to give.
bool RtlGenRandom(void* bytes, std::uint32_t count) noexcept;

// Whether this is called while a library is being loaded or unloaded, from what it does then (DllMain, its static
// objects): no time to load libraries, to start something, or for messages, which lead to code that waits for the
// loader's lock. Never on the portable side.
bool isUnderLoaderLock() noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
