#include "platform/Lock.h"

namespace pixkit::platform {

void Lock::lock() noexcept {
    while (m_isTaken.test_and_set(std::memory_order_acquire))
        m_isTaken.wait(true, std::memory_order_relaxed);
}

void Lock::unlock() noexcept {
    m_isTaken.clear(std::memory_order_release);
    m_isTaken.notify_one();
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
