// Data that no reader takes, by what it begins with.
#pragma once
#include "diagnostics/Outcome.h"
#include <cstdint>
#include <span>

namespace pixkit {

// Why data that begins so, and bears the signature of no format in codecs/Formats.h, is none that is read here.
Reason reasonOfUnknown(std::span<const std::uint8_t> start) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
