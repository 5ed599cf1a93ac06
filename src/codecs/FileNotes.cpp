#include "codecs/FileNotes.h"
#include "coding/ExifOrientation.h"
#include "coding/GifFrame.h"

namespace pixkit {

void noteSegment(const JpegSegments& segment, PictureNotes& notes) {
    constexpr std::size_t nameBytes = 6; // "Exif", and two zeros
    if (segment.marker() == JpegSegments::exif && segment.isNamed("Exif") && segment.data().size() >= nameBytes) {
        notes.hasExif = true;
        notes.orientation = exifOrientation(segment.data().subspan(nameBytes));
    } else if (segment.marker() == JpegSegments::profile && segment.isNamed("ICC_PROFILE")) {
        notes.hasProfile = true;
    }
}

PictureNotes notesOf(std::span<const std::uint8_t> file) {
    PictureNotes notes;
    std::size_t images = 0;
    notes.endsEarly = forEachGifImage(file, [&](const GifFrame& /*image*/) { ++images; });
    if (images > 1) notes.moreFrames = static_cast<std::uint32_t>(images - 1);
    for (JpegSegments segments(file); segments.next();) {
        noteSegment(segments, notes);
        if (segments.marker() == JpegSegments::sos) notes.endsEarly = endsJpegEarly(file, segments.end());
    }
    return notes;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
