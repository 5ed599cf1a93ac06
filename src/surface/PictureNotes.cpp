#include "surface/PictureNotes.h"

namespace pixkit {

namespace {

std::string counted(std::uint32_t count, const char* one, const char* several) {
    return count == 1 ? std::string("1 ") + one : std::to_string(count) + " " + several;
}

} // namespace

std::string PictureNotes::text() const {
    std::string lines;
    const auto add = [&](bool isSo, const std::string& line) {
        if (!isSo) return;
        if (!lines.empty()) lines += '\n';
        lines += line;
    };
    add(endsEarly, "the file ends early");
    add(moreFrames != 0, counted(moreFrames, "further frame is", "further frames are") + " left out");
    add(has16Bits, "of 16 bits a channel 8 are kept");
    add(hasGamma, "the gamma or the primaries that the file states are not applied");
    add(hasProfile, "the colour profile is not applied");
    add(hasExif, "the EXIF data is not kept");
    add(badTexts != 0, counted(badTexts, "text is", "texts are") + " damaged or too long, and left out");
    return lines;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
