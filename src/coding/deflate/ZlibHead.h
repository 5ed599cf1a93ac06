// The two bytes in front of a zlib stream (RFC 1950, 2.2).
#pragma once
#include "coding/ByteWriter.h"
#include <cstdint>
#include <vector>

namespace pixkit::deflate {

// Deflate with a window of 32 KiB; a hint at the level; the check bits make it a multiple of 31.
inline void writeZlibHead(std::vector<std::uint8_t>& out, int level) {
    const unsigned hint = level < 2 ? 0 : level < 6 ? 1 : level == 6 ? 2 : 3;
    const unsigned head = 0x7800 | hint << 6;
    ByteWriter(out).bigEndian16(head + 31 - head % 31);
}

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
