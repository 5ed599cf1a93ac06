// Where a number goes in a table of 2 to the power of `bits` slots: multiplied by 2 to the power of 32 over the golden
// ratio, numbers that are close together are spread evenly over the uppermost bits.
#pragma once
#include <cstdint>

namespace pixkit {

template <unsigned bits>
constexpr std::uint32_t spreadHash(std::uint32_t number) noexcept {
    static_assert(bits >= 1 && bits <= 32);
    return number * 0x9E3779B1U >> (32 - bits);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
