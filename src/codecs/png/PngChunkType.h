// What is true of all PNG chunks: types as numbers, and what stands around the data.
#pragma once
#include <cstddef>
#include <cstdint>

namespace pixkit {

// Bytes before the data, length and type, and with the CRC that is behind it.
constexpr std::size_t pngChunkHead = 8, pngChunkOverhead = 12;

constexpr std::uint32_t pngChunkType(const char (&name)[5]) noexcept {
    return static_cast<std::uint32_t>(name[0]) << 24 | static_cast<std::uint32_t>(name[1]) << 16 |
           static_cast<std::uint32_t>(name[2]) << 8 | static_cast<std::uint32_t>(name[3]);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
