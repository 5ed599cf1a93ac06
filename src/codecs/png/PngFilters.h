// Undoes the row filters of the PNG standard, filter method 0.
#pragma once
#include <cstddef>
#include <cstdint>

namespace pixkit {

// As they stand in front of rows (PNG standard, 9.2). Not eFilterMethods, with which callers ask for one of these.
enum class PngFilterType : std::uint8_t { none, sub, up, average, paeth };

// Undoes filter `filterType` of one row of `bytes` bytes in place. `above` is the unfiltered previous row, null in the
// first row of a pass, which stands for zeros; `stepVal` the distance in bytes to the pixel on the left. An unknown
// filter type leaves the row as it is: a picture with one strange row still shows.
void decodeFilter(std::uint8_t filterType, std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                  std::size_t stepVal) noexcept;

// One filter each, with the same parameters.
void DecodeFilter_Sub(std::uint8_t* row, std::size_t bytes, std::size_t stepVal) noexcept;
void DecodeFilter_Up(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) noexcept;
void DecodeFilter_Avg(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t stepVal) noexcept;
void DecodeFilter_Paeth(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t stepVal) noexcept;
// The same for a row and the one below it, neither of which is the first.
void DecodeFilter_Paeth(std::uint8_t* row, std::uint8_t* below, const std::uint8_t* above, std::size_t bytes,
                        std::size_t stepVal) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
