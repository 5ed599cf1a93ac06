// Memory by a handle that anybody may have made up.
#pragma once
#include <cstdint>
#include <span>
// windows.h needs to come last: its macros must not reach the headers above.
#include <windows.h>

namespace pixkit::platform {

// Global memory that is fixed in its place for a scope.
class GlobalBlock {
  public:
    // Any number may be given.
    explicit GlobalBlock(HGLOBAL memory) noexcept;
    ~GlobalBlock();
    GlobalBlock(const GlobalBlock&) = delete;
    GlobalBlock& operator=(const GlobalBlock&) = delete;

    // Empty for what is no global memory, discarded, or cannot be locked.
    std::span<const std::uint8_t> bytes() const noexcept { return m_bytes; }

  private:
    HGLOBAL m_memory = nullptr; // null: nothing was locked
    std::span<const std::uint8_t> m_bytes;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
