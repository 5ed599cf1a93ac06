// What a load has noted of its file beside the pixels. It goes with the image.
#pragma once
#include <cstdint>
#include <string>

namespace pixkit {

struct PictureNotes {
    std::uint8_t orientation = 1; // EXIF, 1 to 8
    // What the file has and the image has not:
    bool endsEarly = false;       // the file does not go on to its end
    bool has16Bits = false;       // a channel
    bool hasGamma = false;        // or primaries, other than those of sRGB, which is what colours are taken for
    bool hasProfile = false;      // of its colours
    bool hasExif = false;         // besides the orientation
    std::uint32_t moreFrames = 0; // of an animation, besides the one that is shown
    std::uint32_t badTexts = 0;   // damaged ones of a PNG, and those beyond what is kept of them (PngNotes.h)

    // A line for each of these, without a full stop; empty where there is none.
    std::string text() const;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
