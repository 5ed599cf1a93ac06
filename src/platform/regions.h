// Regions: sets of pixels, such as the shape of a window, under the names of the Windows GDI. They are objects as in
// gdi.h: GetObjectType knows them, DeleteObject frees them, and a handle that is zero, stale or of another kind makes a
// call fail.
#pragma once
#include "platform/api.h"
#include "platform/gdi.h"
#include <cstddef>
#include <span>

namespace pixkit::platform {

using UniqueRegion = UniqueHandle<&DeleteObject>;

// The region of rectangles in the order in which regions keep them; without any it is empty. They stand in bands, the
// highest first, one beside or below the other: those of a band have one top and one bottom, and stand from the left
// with gaps between them. Bands that touch differ in more than their rows. Of rectangles in another order it is not
// said which region they give. The time grows as their number does. 0 on failure.
PIXKIT_API Handle ExtCreateRegion(std::span<const Rect> rectangles) noexcept;

// How many rectangles a region has; copies them, in that order, where `rectangles` has room for all. 0 also for what is
// no region, and without memory to copy them.
PIXKIT_API std::size_t GetRegionData(Handle region, std::span<Rect> rectangles = {}) noexcept;

// The smallest rectangle around a region: `empty` and 0, 0, 0, 0, or `simple` for a region that is one rectangle. `box`
// stays as it was on failure.
PIXKIT_API RegionKind GetRgnBox(Handle region, Rect& box) noexcept;

PIXKIT_API bool PtInRegion(Handle region, std::int32_t x, std::int32_t y) noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
