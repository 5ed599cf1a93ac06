// Which pictures the system's loader is not shown, for their size or by the limits of an instance: their headers are
// looked at here, before that takes memory or time for them.
#pragma once
#include "coding/GifFrame.h"
#include "diagnostics/Outcome.h"
#include <cstdint>
#include <span>

namespace pixkit {

class cPixSheet;

// Why the system is not asked for a picture of this size, of which it makes one of 4 bytes a pixel first; none where it
// may be asked. `besides`: further bytes that it takes.
Reason systemLimit(const cPixSheet& host, double width, double height, double besides = 0) noexcept;

// The same for the frame of a GIF file of `size` bytes.
Reason gifLimit(const cPixSheet& host, const GifFrame& frame, std::size_t size) noexcept;

// The same for the bytes of a file, if its size can be told: of GIF and JPEG files. Without limits too it is a JPEG
// that is out of proportion (isInProportion), and with them one whose size cannot be told.
Reason fileLimit(const cPixSheet& host, std::span<const std::uint8_t> file) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
