#include "codecs/FileNotes.h"
#include "coding/ExifOrientation.h"
#include "coding/GifFrame.h"
#include "coding/JpegFrame.h"

namespace pixkit {

PictureNotes notesOf(std::span<const std::uint8_t> file) {
    PictureNotes notes;
    std::size_t images = 0;
    notes.endsEarly = forEachGifImage(file, [&](const GifFrame& /*image*/) { ++images; });
    if (images > 1) notes.moreFrames = static_cast<std::uint32_t>(images - 1);
    for (JpegSegments segments(file); segments.next();) {
        constexpr std::size_t nameBytes = 6; // "Exif", and two zeros
        if (segments.marker() == JpegSegments::exif && segments.isNamed("Exif") &&
            segments.data().size() >= nameBytes) {
            notes.hasExif = true;
            notes.orientation = exifOrientation(segments.data().subspan(nameBytes));
        } else if (segments.marker() == JpegSegments::profile && segments.isNamed("ICC_PROFILE")) {
            notes.hasProfile = true;
        } else if (segments.marker() == JpegSegments::sos) {
            notes.endsEarly = endsJpegEarly(file, segments.end());
        }
    }
    return notes;
}

} // namespace pixkit
