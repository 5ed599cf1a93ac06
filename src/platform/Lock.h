// What threads take turns by.
#pragma once
#include <atomic>

namespace pixkit::platform {

// A mutex that is there from the start and that nothing can fail, as std::mutex is natively; that of the Windows
// toolchain takes memory when it is first locked, and throws where there is none. It is no place to wait for long.
class Lock {
  public:
    constexpr Lock() noexcept = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    void lock() noexcept;
    void unlock() noexcept;

  private:
    std::atomic_flag m_isTaken;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
