// What members of cPixSheet take and give in more than one number.
#pragma once
#include "shared/enumerations.h"
#include <cstdint>
#include <string>
#include <variant>

namespace pixkit {

// The point of a cursor that clicks, in pixels from the top left; it may lie outside the image.
struct CursorHotspot {
    std::int32_t x = 0, y = 0;
    bool operator==(const CursorHotspot&) const = default;
};

// One image of an icon file as its own header describes it: pixels, bits of a source pixel, 1 for a PNG and 0 for a
// bitmap.
struct IconSourceSize {
    std::int32_t Width, Height, bitDepth, isPNG;
    bool operator==(const IconSourceSize&) const = default;
};

// An image of an icon file to be written: pixels, 0 for the width or height of the first source, and bits a pixel: 1,
// 4, 8, 24 or 32 (0 is 32, others count as the next greater), or HIGH_COLOR, TRUE_COLOR, TRUE_COLOR_ALPHA.
struct IconEntrySize {
    std::int32_t Width = 0, Height = 0, bitDepth = TRUE_COLOR_ALPHA;
    bool operator==(const IconEntrySize&) const = default;
};

// A part of an image: the position counts from its top left corner.
struct TrimRectangle {
    std::int32_t x = 0, y = 0, Width = 0, Height = 0;
};

// How pixels lie in rows of bytes: four each, in this order.
enum class RowFormat : std::uint8_t { straightRGBA, straightBGRA, premultipliedRGBA, premultipliedBGRA };

// The value of a PNG property: nothing, a number, a date (days since 30 December 1899, of UTC) or a text in UTF-8.
using PngValue = std::variant<std::monostate, std::int32_t, double, std::string>;

} // namespace pixkit
// SPDX-License-Identifier: MIT
