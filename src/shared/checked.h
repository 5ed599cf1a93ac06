// Sums and products in signed 32-bit arithmetic that notice an overflow.
#pragma once
#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>

namespace pixkit {

inline std::optional<std::int32_t> toLong(std::int64_t value) noexcept {
    if (value < std::numeric_limits<std::int32_t>::min() || value > std::numeric_limits<std::int32_t>::max()) return {};
    return static_cast<std::int32_t>(value);
}

inline std::optional<std::int32_t> checkedMultiply(std::int32_t a, std::int32_t b) noexcept {
    return toLong(std::int64_t{a} * b);
}

inline std::int32_t longOrOverflow(std::int64_t value) {
    if (const auto result = toLong(value)) return *result;
    throw std::overflow_error("a number that 32 bits do not hold");
}

// Length in bytes of a row of `Width` pixels at `bitDepth` bits padded to a multiple of four bytes (the name says word,
// the alignment is a double word). Throws std::overflow_error where the result does not fit 32 bits signed.
inline std::int32_t iparseByteAlignOnWord(std::uint8_t bitDepth, std::int32_t Width) {
    const std::int64_t bits = longOrOverflow(std::int64_t{bitDepth} * Width + 31);
    return static_cast<std::int32_t>((bits & ~std::int64_t{31}) / 8);
}

// The value with its four bytes in reverse order (big-endian to little-endian and back).
constexpr std::int32_t iparseReverseLong(std::int32_t inLong) noexcept {
    const auto value = static_cast<std::uint32_t>(inLong);
    return static_cast<std::int32_t>((value >> 24) | ((value >> 8) & 0xFF00U) | ((value << 8) & 0xFF0000U) |
                                     (value << 24));
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
