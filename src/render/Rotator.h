// Rotated drawing.
#pragma once
#include "render/DrawJob.h"
#include <cstdint>

namespace pixkit {

// Where the pixels of a rotated picture come from: the job's source fills its destination, mirrored as asked, and that
// is rotated as a whole about its centre. The centre of each pixel of the destination is mapped back into the
// source; nearest: the pixel that it falls on; else the mean of the 2 x 2 pixel centres around it, weighted by
// distance in steps of 1/256, in which what lies outside of the rectangle counts as transparent, so that edges fade.
// Rotations by multiples of 90 degrees take every pixel of an unstretched picture as it is; where the turned rectangle
// would lie between pixels, it moves up and to the left by half of one. Bytes are the same in every build.
class Rotator {
  public:
    // The image stays while the rotator is used.
    explicit Rotator(const DrawJob& job);

    // What of the destination may be touched.
    Rect bounds() const noexcept { return m_bounds; }
    // Fills `pixels` with those of the destination rectangle `part`, and those outside of the picture with 0. The view
    // is bottom-up and has the size of the rectangle, which is cut from `bounds`.
    void sample(PixelView pixels, const Rect& part) const;
    // The columns within `part` outside of which its pixels are all transparent; may be empty.
    Rect covered(const Rect& part) const;

  private:
    struct Span;
    Span spanOf(std::int64_t y, std::int64_t left, std::int64_t right) const;
    bool isReached(std::int64_t u, std::int64_t v) const noexcept;
    bool isInside(std::int64_t u, std::int64_t v) const noexcept;
    Span sampleEnds(std::uint8_t* row, std::int64_t y, const Rect& part) const;
    void samplePixel(std::uint8_t* pixel, std::int64_t u, std::int64_t v) const;

    // Position of a destination pixel's centre in the source rectangle: columns u, stored rows v.
    struct Axis {
        double start, perColumn, perRow;
        double at(double dx, double dy) const noexcept { return start + perColumn * dx + perRow * dy; }
    };

    ConstPixelView m_source; // the rectangle
    bool m_isInterpolating;
    double m_centreX, m_centreY;
    Axis m_u, m_v;
    Rect m_bounds;
};

// Draws a job whose angle is finite, by the arithmetic of the blender. Done when it was drawn, or nothing of it is to
// be seen; refuses where there is no destination and where the blender fails. Throws std::bad_alloc.
Outcome spt_RotateImage(DrawJob& job);

} // namespace pixkit
// SPDX-License-Identifier: MIT
