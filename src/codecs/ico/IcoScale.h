// Pictures at the size of an icon.
#pragma once
#include "shared/PixelView.h"
#include "surface/cPixSheet.h"
#include <cstddef>
#include <cstdint>
#include <vector>

namespace pixkit {

// Sides of an icon, and hotspots, end here: directories count the latter with 16 bits.
inline constexpr std::int32_t largestIcon = 65535;

// Where a picture lies within an icon, from the top left: as large as fits in its proportions, in the middle.
struct IcoPlacement {
    std::size_t left, top, width, height;
};
IcoPlacement icoPlacement(ConstPixelView source, std::size_t width, std::size_t height) noexcept;

// Where a point of the picture is then, from the top left of the icon: 0 .. largestIcon, as directories of cursors have
// it.
CursorHotspot icoHotspot(ConstPixelView source, CursorHotspot point, std::size_t width, std::size_t height) noexcept;

// The pixels of width * height, rows bottom-up without padding, that the picture makes there; what it does not cover is
// clear. Along each axis that shrinks a pixel is the mean of what it covers of the source, premultiplied
// (resampleArea); along one that grows it lies between its two neighbours, by the distance of their centres
// (resampleTriangle). Without `hasAlpha` the picture is opaque whatever its alpha bytes hold. Sides are 1 ..
// largestIcon. Throws std::bad_alloc.
std::vector<std::uint8_t> icoScale(ConstPixelView source, bool hasAlpha, std::size_t width, std::size_t height);

} // namespace pixkit
// SPDX-License-Identifier: MIT
