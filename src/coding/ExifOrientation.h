// How a photograph wants to be turned, by its EXIF data.
#pragma once
#include <cstdint>
#include <span>

namespace pixkit {

// The Orientation (tag 0x0112) of the first directory of EXIF data, which is built like a TIFF file (TIFF 6.0, section
// 2), in either order of bytes: 1 to 8, where 1 is shown as stored. 1 too where the data is damaged or does not say it.
std::uint8_t exifOrientation(std::span<const std::uint8_t> tiff) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
