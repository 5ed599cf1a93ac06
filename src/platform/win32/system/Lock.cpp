#include "platform/Lock.h"
#include <windows.h>

namespace pixkit::platform {

// The system's own slim locks came with Windows Vista. Whoever has to wait gives its turn away, and after a while
// sleeps, so that a thread of lower priority comes to its end, too.
void Lock::lock() noexcept {
    for (int turns = 0; m_isTaken.test_and_set(std::memory_order_acquire); ++turns)
        ::Sleep(turns < 4000 ? 0 : 1);
}

void Lock::unlock() noexcept {
    m_isTaken.clear(std::memory_order_release);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
