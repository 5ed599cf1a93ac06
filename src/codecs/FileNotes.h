// What files of formats that the system's loader decodes say beside their pixels.
#pragma once
#include "coding/JpegFrame.h"
#include "surface/PictureNotes.h"
#include <cstdint>
#include <span>

namespace pixkit {

// Of a whole GIF or JPEG file; of others there is nothing to note.
PictureNotes notesOf(std::span<const std::uint8_t> file);

// Adds what a segment of a JPEG file says: EXIF data, a colour profile.
void noteSegment(const JpegSegments& segment, PictureNotes& notes);

} // namespace pixkit
// SPDX-License-Identifier: MIT
