// The CRC-32 of PNG chunks (ISO/IEC 15948, annex D) and of gzip.
#pragma once
#include "kernels/kernels.h"
#include <cstdint>
#include <span>

namespace pixkit {

// Of the bytes that `crc` stands for, 0 for none, and then these.
inline std::uint32_t crc32(std::uint32_t crc, std::span<const std::uint8_t> bytes) noexcept {
    return kernels::table().crc32(crc, bytes.data(), bytes.size());
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
