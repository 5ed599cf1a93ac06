// The part of the clipboard that differs between the sides of the seam.
#pragma once
#include "platform/clipboard.h"
#include <chrono>
#include <thread>

namespace pixkit::platform {

// The clipboard that all programs share; empty where the system has none. May throw std::bad_alloc.
ClipboardProvider systemClipboard();

// Calls `attempt` until it answers that nobody else had the clipboard open, at most for half a second.
template <class Attempt>
void untilNotBusy(Attempt&& attempt) {
    using std::chrono::milliseconds;
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + milliseconds(500);
    while (!attempt() && Clock::now() < end)
        std::this_thread::sleep_for(milliseconds(10));
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
