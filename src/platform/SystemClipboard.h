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
    using namespace std::chrono_literals;
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + 500ms;
    while (!attempt() && Clock::now() < end)
        std::this_thread::sleep_for(10ms);
}

} // namespace pixkit::platform
