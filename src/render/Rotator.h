// Rotated drawing.
#pragma once
#include "render/Blender.h"
#include "render/PixelBuffer.h"
#include "shared/PixelView.h"
#include <cstdint>

namespace pixkit {

// A picture's rectangle and how it is turned: the rectangle at SrcX, SrcY (counted from the top), which lies within the
// image, fills the one at TopX, TopY, mirrored where a destination size is negative, and that is rotated as a whole
// about its centre by Angle degrees, finite, clockwise as seen.
struct RotationRequest {
    float Angle;
    std::int32_t TopX, TopY, destWidth, destHeight;
    std::int32_t SrcX, SrcY, srcWidth, srcHeight;
};

// Where the pixels of a rotated picture come from. The centre of each pixel of the destination is mapped back into the
// source; nearest: the pixel that it falls on; else the mean of the 2 x 2 pixel centres around it, weighted by
// distance in steps of 1/256, in which what lies outside of the rectangle counts as transparent, so that edges fade.
// Rotations by multiples of 90 degrees take every pixel of an unstretched picture as it is; where the turned rectangle
// would lie between pixels, it moves up and to the left by half of one. Bytes are the same in every build.
class Rotator {
  public:
    // No size is 0, and the views stay while the rotator is used.
    Rotator(ConstPixelView image, const RotationRequest& request, bool HighQuality);

    // What of the destination may be touched.
    PixelRect bounds() const noexcept { return m_bounds; }
    // Fills `pixels` with those of the destination rectangle `part`, and those outside of the picture with 0. The view
    // is bottom-up and has the size of the rectangle, which is cut from `bounds`.
    void sample(PixelView pixels, const PixelRect& part) const;
    // The columns within `part` outside of which its pixels are all transparent; may be empty.
    PixelRect covered(const PixelRect& part) const;

  private:
    struct Span;
    Span spanOf(std::int64_t y, std::int64_t left, std::int64_t right) const;
    bool isReached(std::int64_t u, std::int64_t v) const noexcept;
    bool isInside(std::int64_t u, std::int64_t v) const noexcept;
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
    PixelRect m_bounds;
};

// Draws the rectangle of `image` rotated, by the arithmetic of the blender; Opacity is a percentage, 1 .. 100. True
// when it was drawn, or nothing of it is to be seen; false, and nothing drawn, for a rectangle that is empty or not
// within the image, an angle that is no number, and where the blender fails. Throws std::bad_alloc.
bool spt_RotateImage(ConstPixelView image, bool HighQuality, platform::Handle hDC, float Angle, std::int32_t TopX,
                     std::int32_t TopY, std::int32_t destWidth, std::int32_t destHeight, std::int32_t SrcX,
                     std::int32_t SrcY, std::int32_t srcWidth, std::int32_t srcHeight, std::int32_t Opacity,
                     cPixSheet* destHostDIB, std::int32_t grayScale, float LightAdjustment);

} // namespace pixkit
