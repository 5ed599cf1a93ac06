// How many bytes a row of pixels takes; in 64 bits, since headers may state widths that no memory holds.
#pragma once
#include <cstdint>

namespace pixkit {

// In PNG files: whole bytes.
constexpr std::uint64_t packedRowBytes(std::uint64_t width, std::uint64_t bitsPerPixel) noexcept {
    return (width * bitsPerPixel + 7) / 8;
}
// In the system's bitmaps, and in the files that hold them: whole words of 32 bits.
constexpr std::uint64_t paddedRowBytes(std::uint64_t width, std::uint64_t bitsPerPixel) noexcept {
    return (width * bitsPerPixel + 31) / 32 * 4;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
