// What files of formats that the system's loader decodes say beside their pixels.
#pragma once
#include "surface/PictureNotes.h"
#include <cstdint>
#include <span>

namespace pixkit {

// Of a whole GIF or JPEG file; of others there is nothing to note.
PictureNotes notesOf(std::span<const std::uint8_t> file);

} // namespace pixkit
