// PNG encoders that are headers alone.
#pragma once
#include <cstdint>
#include <vector>

namespace bench {

// Straight R, G, B, A, top row first, at a level of compression from 1 to 9.
void encodePngStb(const std::uint8_t* rgba, int width, int height, int level, std::vector<std::uint8_t>& out);

} // namespace bench
// SPDX-License-Identifier: MIT
