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
    throw std::overflow_error("overflow");
}

} // namespace pixkit
