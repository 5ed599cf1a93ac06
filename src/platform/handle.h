#pragma once
#include <cstdint>
#include <utility>

namespace pixkit::platform {

// A system handle as the public interface shows it: 32 bits in a 32-bit build, pointer-sized in a 64-bit one. 0 = none.
using Handle = std::intptr_t;

// What file functions answer instead of a handle when they fail.
inline constexpr Handle invalidHandle = -1;

// Owns one handle and gives it back through `Release` where it goes out of scope.
template <auto Release, Handle Nothing = 0>
class UniqueHandle {
  public:
    UniqueHandle() noexcept = default;
    explicit UniqueHandle(Handle handle) noexcept : m_handle(handle) {}
    UniqueHandle(UniqueHandle&& other) noexcept : m_handle(other.release()) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        reset(other.release());
        return *this;
    }
    UniqueHandle(const UniqueHandle&) = delete;
    UniqueHandle& operator=(const UniqueHandle&) = delete;
    ~UniqueHandle() { reset(); }

    Handle get() const noexcept { return m_handle; }
    explicit operator bool() const noexcept { return m_handle != Nothing; }
    Handle release() noexcept { return std::exchange(m_handle, Nothing); }
    void reset(Handle handle = Nothing) noexcept {
        if (m_handle != Nothing) Release(m_handle);
        m_handle = handle;
    }

  private:
    Handle m_handle = Nothing;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
