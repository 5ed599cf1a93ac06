// The windows of the calling thread, disabled while a dialog is open: the dialog itself would only disable its owner,
// and without one nothing.
#pragma once
#include <vector>
#include <windows.h>

namespace pixkit::platform {

class ThreadWindows {
  public:
    ThreadWindows() noexcept = default;
    ~ThreadWindows() { enable(); }
    ThreadWindows(const ThreadWindows&) = delete;
    ThreadWindows& operator=(const ThreadWindows&) = delete;

    // Those that are visible and enabled. Where there is no memory to remember a window it stays as it is.
    void disable() noexcept;
    // Those that were disabled here.
    void enable() noexcept;

  private:
    std::vector<HWND> m_disabled;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
