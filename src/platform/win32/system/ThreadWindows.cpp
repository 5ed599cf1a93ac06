#include "platform/win32/system/ThreadWindows.h"
#include <new>

namespace pixkit::platform {

namespace {

BOOL CALLBACK add(HWND window, LPARAM list) noexcept {
    if (::IsWindowVisible(window) == FALSE || ::IsWindowEnabled(window) == FALSE) return TRUE;
    try {
        reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
    } catch (const std::bad_alloc&) {
        return FALSE;
    }
    return TRUE;
}

} // namespace

void ThreadWindows::disable() noexcept {
    // Two steps: disabling a window sends it messages, in which its program may open or close others.
    ::EnumThreadWindows(::GetCurrentThreadId(), &add, reinterpret_cast<LPARAM>(&m_disabled));
    for (const HWND window : m_disabled)
        ::EnableWindow(window, FALSE);
}

void ThreadWindows::enable() noexcept {
    for (const HWND window : m_disabled)
        ::EnableWindow(window, TRUE);
    m_disabled.clear();
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
