// How many objects of the system this process holds, for tests that nothing is left behind. The system counts them, but
// not every one (Wine says 0): so all places of its tables are looked at as well. Whoever compares such counts shows
// first that they react to an object that is held.
#pragma once
#include <windows.h>

namespace pixkit::test {

inline DWORD liveGdiObjects() {
    DWORD live = ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS);
    for (ULONG_PTR place = 1; place <= 0xFFFF; ++place)
        live += ::GetObjectType(reinterpret_cast<HGDIOBJ>(place)) != 0;
    return live;
}

inline DWORD liveIcons() { // and cursors
    DWORD live = ::GetGuiResources(::GetCurrentProcess(), GR_USEROBJECTS);
    for (ULONG_PTR place = 1; place <= 0xFFFF; ++place) {
        ICONINFO info;
        if (::GetIconInfo(reinterpret_cast<HICON>(place), &info) == FALSE) continue;
        ::DeleteObject(info.hbmColor);
        ::DeleteObject(info.hbmMask);
        ++live;
    }
    return live;
}

} // namespace pixkit::test
