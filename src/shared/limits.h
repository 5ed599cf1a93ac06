// Limits that more than one room goes by.
#pragma once
#include <cstdint>

namespace pixkit {

// Files of this size and below are not loaded.
inline constexpr std::int64_t largestRefusedFile = 56;

} // namespace pixkit
// SPDX-License-Identifier: MIT
