// Sizes that come from outside, multiplied and added without wrapping round: 32-bit programs count memory in 32 bits.
#pragma once
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>

namespace pixkit {

// A number of bytes, or of what they hold. Sums and products that 64 bits do not hold stay at the greatest number, so
// that what is asked of them in the end is answered as of any size that nobody has.
class CheckedSize {
  public:
    // No object in memory is larger: places in it are told apart by signed numbers.
    static constexpr std::uint64_t most = std::numeric_limits<std::ptrdiff_t>::max();

    constexpr CheckedSize(std::uint64_t value) noexcept : m_value(value) {}

    friend constexpr CheckedSize operator+(CheckedSize a, CheckedSize b) noexcept {
        return a.m_value > endless - b.m_value ? endless : a.m_value + b.m_value;
    }
    friend constexpr CheckedSize operator*(CheckedSize a, CheckedSize b) noexcept {
        return b.m_value != 0 && a.m_value > endless / b.m_value ? endless : a.m_value * b.m_value;
    }

    constexpr bool isAtMost(std::uint64_t limit) const noexcept { return m_value <= limit; }
    // The size of a block of memory. Throws std::bad_alloc where none can be so large.
    constexpr std::size_t inMemory() const {
        if (m_value > most) throw std::bad_alloc();
        return static_cast<std::size_t>(m_value);
    }

  private:
    static constexpr std::uint64_t endless = std::numeric_limits<std::uint64_t>::max();

    std::uint64_t m_value;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
