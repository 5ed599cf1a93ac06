#include "platform/faults.h"
#include <windows.h>

namespace pixkit::platform {

namespace {

// The system counts them, but not every one does (Wine says 0): then all places of its tables are looked at.
std::size_t gdiObjects() noexcept {
    if (const DWORD live = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS); live != 0) return live;
    std::size_t live = 0;
    for (ULONG_PTR place = 1; place <= 0xFFFF; ++place)
        live += ::GetObjectType(reinterpret_cast<HGDIOBJ>(place)) != 0 ? 1U : 0U;
    return live;
}

std::size_t icons() noexcept { // and cursors
    if (const DWORD live = ::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS); live != 0) return live;
    std::size_t live = 0;
    for (ULONG_PTR place = 1; place <= 0xFFFF; ++place) {
        ICONINFO info;
        if (::GetIconInfo(reinterpret_cast<HICON>(place), &info) == FALSE) continue;
        ::DeleteObject(info.hbmColor);
        ::DeleteObject(info.hbmMask);
        ++live;
    }
    return live;
}

// Files and libraries.
std::size_t kernelObjects() noexcept {
    using GetProcessHandleCount = BOOL WINAPI(HANDLE, DWORD*); // newer than the oldest systems
    const HMODULE kernel = ::GetModuleHandleW(L"kernel32");
    auto* const count = reinterpret_cast<GetProcessHandleCount*>(
        reinterpret_cast<void*>(::GetProcAddress(kernel, "GetProcessHandleCount")));
    DWORD live = 0;
    if (count != nullptr) count(::GetCurrentProcess(), &live);
    return live;
}

} // namespace

std::size_t openHandles() noexcept {
    return gdiObjects() + icons() + kernelObjects();
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
