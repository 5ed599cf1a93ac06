// One image of an icon file that is written.
#pragma once
#include "shared/PixelView.h"
#include <cstdint>
#include <optional>
#include <vector>

namespace pixkit {

// Bits a pixel that stand for a depth as callers state it: 1, 4, 8, 24 or 32, the next greater of those where icons
// have no such depth; 0 is 32; or a selector of eConstants. Nothing for other numbers.
std::optional<unsigned> icoDepth(std::int32_t bitDepth) noexcept;

// A row of pixels in the AND mask, which hides what has an alpha below 128. `out` holds whole bytes of 0.
void icoMask(std::uint8_t* out, const std::uint8_t* pixels, std::size_t count);

struct IcoImageBytes {
    std::vector<std::uint8_t> bytes;
    unsigned bitDepth; // as the directory says it
};

// An image from premultiplied pixels, which it uses up: a PNG file of 32 bits from 256 pixels a side on, and where a
// bitmap of 32 bits would be read with other colours, else a bitmap.
// Below 32 bits pixels of an alpha below 128 are clear and all others opaque in their straight colour. Up to 8 bits
// there are 2 to the power of `depth` colours: the picture's own when they are not more, else those that suit it best;
// at 1 bit black and white, by brightness, with errors diffused.
IcoImageBytes icoImage(PixelView pixels, unsigned depth);

} // namespace pixkit
// SPDX-License-Identifier: MIT
