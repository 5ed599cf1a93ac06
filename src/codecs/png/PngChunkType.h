// The types of PNG chunks as numbers.
#pragma once
#include <cstdint>

namespace pixkit {

constexpr std::uint32_t pngChunkType(const char (&name)[5]) noexcept {
    return static_cast<std::uint32_t>(name[0]) << 24 | static_cast<std::uint32_t>(name[1]) << 16 |
           static_cast<std::uint32_t>(name[2]) << 8 | static_cast<std::uint32_t>(name[3]);
}

} // namespace pixkit
