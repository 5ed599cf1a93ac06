// The size of a picture by the beginning of its file, so that what is too large is not read.
#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

namespace pixkit {

// In pixels; 0 where the beginning does not tell it.
struct StatedSize {
    double width = 0, height = 0;
};

// Of BMP, GIF, JPEG and PNG files, and of the JPEG or PNG file that a BMP file holds. As many bytes as this tell it,
// except where more stands in front of the file that a BMP file holds, of a JPEG's frame header or of a GIF's first
// image.
inline constexpr std::size_t bytesOfStatedSize = 65536;
StatedSize statedSize(std::span<const std::uint8_t> start) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
