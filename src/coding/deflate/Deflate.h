// Compresses into zlib streams (RFC 1950) of DEFLATE (RFC 1951). README.md in this folder teaches the format.
#pragma once
#include <cstdint>
#include <span>
#include <vector>

namespace pixkit::deflate {

constexpr int fastestLevel = 1;
constexpr int defaultLevel = 6;
constexpr int smallestLevel = 9;

// Appends a zlib stream that holds `data` to `out`. Level 0 only stores, 1 copies nothing but repeated bytes, 9 is
// small; others count as the next of these. The same data and level give the same bytes on every machine. Throws
// std::bad_alloc; `out` may then have grown, but what it held before is there.
void compressZlib(std::span<const std::uint8_t> data, int level, std::vector<std::uint8_t>& out);

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
