// The memory of one bitmap.
#pragma once
#include "coding/CheckedSize.h"
#include <cstddef>
#include <cstdint>

namespace pixkit::platform {

// Zero bytes, given back at the end of its life.
class PixelMemory {
  public:
    PixelMemory() noexcept = default;
    // Empty (data() is null) when there is not enough memory, or none so large can be.
    explicit PixelMemory(CheckedSize size) noexcept;
    ~PixelMemory();
    PixelMemory(const PixelMemory&) = delete;
    PixelMemory& operator=(const PixelMemory&) = delete;

    std::uint8_t* data() const noexcept { return m_data; }

  private:
    std::uint8_t* m_data = nullptr;
    std::size_t m_mapped = 0; // bytes mapped from the system; 0: the memory is the C library's
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
