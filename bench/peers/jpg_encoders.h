// Encoders that JPEG writing is compared with, beside libjpeg, which the tests have too.
#pragma once
#include <cstdint>
#include <vector>

namespace bench {

// Replaces `out` by a JPEG file of rows of R, G, B, top row first.
void encodeJpegStb(const std::uint8_t* rgb, int width, int height, int quality, std::vector<std::uint8_t>& out);

} // namespace bench
// SPDX-License-Identifier: MIT
