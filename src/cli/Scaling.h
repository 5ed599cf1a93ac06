// How large pictures become.
#pragma once
#include <cstdint>

namespace pixkit::cli {

struct PictureSize {
    std::int32_t width, height;
};

// By a factor, or into a box.
struct Scaling {
    enum class Mode {
        asItIs,
        byFactor,
        fit,     // in proportion, as large as goes into the box
        down,    // the same, but never enlarged
        stretch, // to the box's size
        fill     // in proportion, so that nothing of the box is left bare
    };
    // Of the box. 0 is open: the picture's own when it is stretched, else what its proportions ask.
    struct Side {
        double length = 0; // pixels, or per cent of the canvas
        bool isPercent = false;
    };
    Mode mode = Mode::asItIs;
    double percent = 100; // the factor
    Side width = {100, true}, height = {100, true};

    bool dependsOnCanvas() const;
    // At least a pixel wide and high. The side of a box that decides is met exactly, the other is rounded.
    PictureSize sizeFor(PictureSize picture, PictureSize canvas) const;
};

// That many per cent of a length, rounded, and a pixel at least.
std::int32_t percentOf(std::int32_t length, double percent);

// The smallest size that holds a picture turned by that many degrees about its centre. Except for quarter turns, which
// fit exactly, width and height stay odd or even as they were, so that both have the same centre.
PictureSize turnedSize(PictureSize picture, double degrees);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
