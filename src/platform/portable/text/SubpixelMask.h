// Coverage in thirds of a pixel's width, filtered as ClearType does it: what a glyph, and a line of them, is drawn as
// before the mean of the three becomes the coverage of a pixel. Glyphs that overlap meet third by third.
#pragma once
#include "platform/gdi.h"
#include "platform/text.h"
#include <cstddef>
#include <cstdint>
#include <freetype/freetype.h>
#include <freetype/ftoutln.h>
#include <vector>

namespace pixkit::platform {

inline std::int64_t widthOf(const Rect& box) noexcept {
    return std::int64_t{box.right} - box.left;
}
inline std::int64_t heightOf(const Rect& box) noexcept {
    return std::int64_t{box.bottom} - box.top;
}
inline bool isEmpty(const Rect& box) noexcept {
    return box.left >= box.right || box.top >= box.bottom;
}
Rect intersection(const Rect& first, const Rect& second) noexcept;
// The smallest around both; an empty one counts for nothing.
Rect unionOf(const Rect& first, const Rect& second) noexcept;
inline constexpr std::int32_t farthestPixel = 1 << 28; // no mask reaches farther
// Edges that lie farther off are moved there, so that sums of them fit.
Rect shifted(const Rect& box, std::int64_t x, std::int64_t y) noexcept;
// The pixels that an outline touches; y counts downwards.
Rect pixelsOf(const FT_Outline& outline) noexcept;

// A rectangle of pixels of three bytes each, top row first. Places count from the origin of what it is part of.
struct Subpixels {
    Subpixels() = default;
    explicit Subpixels(const Rect& area);
    // Covers these pixels whole.
    void fill(const Rect& pixels) noexcept;
    // Covers what another covers; its origin comes to x, y.
    void add(const Subpixels& other, std::int64_t x, std::int64_t y) noexcept;
    // Adds the means to a mask, in which the box lies, of rows of `width` bytes.
    void addMeans(std::uint8_t* mask, std::int32_t width) const noexcept;

    Rect box;
    std::vector<std::uint8_t> bytes;
};

// Turns an outline and moves it to its place.
void turn(FT_Outline& outline, const TextTurn& place) noexcept;
// Renders the part of an outline that lies in the area; what is beyond touches the outermost pixels wrongly, by the
// reach of the filter. The outline is used up. False on failure.
bool renderSubpixels(FT_Library library, FT_Outline& outline, Subpixels& result);
// Adds to a mask the part of an outline that lies in it, a pixel at a time without filter. The outline is used up.
bool renderPixels(FT_Library library, FT_Outline& outline, std::uint8_t* mask, std::int32_t width, std::int32_t height);

// What two layers cover together, 0 to 255.
inline std::uint8_t covered(std::uint8_t below, std::uint8_t above) noexcept {
    return static_cast<std::uint8_t>((255 * above + below * (255 - above) + 127) / 255);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
