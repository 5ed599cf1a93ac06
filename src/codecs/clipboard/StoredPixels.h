// A picture exactly as an instance holds it, for other instances: the clipboard's own formats change colours of
// translucent pixels, and say nothing of Alpha and ImageType.
#pragma once
#include "codecs/Reading.h"
#include "codecs/Writing.h"
#include <cstdint>
#include <span>
#include <vector>

namespace pixkit {

// What the block is registered as. Another layout needs another name.
inline constexpr std::string_view storedPixelsFormat = "pixkit stored pixels 1";

// README.md in this folder lists the fields.
std::vector<std::uint8_t> makeStoredPixels(const SourcePicture& picture);
// The block may be longer than what it says. It came from another program: nothing in it is believed.
ReadResult readStoredPixels(std::span<const std::uint8_t> block, cPixSheet& host);

} // namespace pixkit
// SPDX-License-Identifier: MIT
