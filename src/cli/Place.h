// Where something goes on a canvas: the words of `compose` and of --text.
//
//   X,Y    each of them one of
//            N                          pixels from the left or upper edge, which may be negative
//            left center right          (of Y: top center bottom) against the edges, or in the middle
//            P%                         between them: 0% is left, 50% is center, 100% is right
//          and behind a word or percentage an offset in pixels, +N to the right or down, -N to the left or up: the
//          sign is that of the axis, so that right-10 is ten pixels inside of the right edge
//   WORD   one word alone, with or without an offset: what it does not say is centred
//
// A percentage counts what the canvas is larger than the thing, as positions of backgrounds do in CSS.
#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

namespace pixkit::cli {

struct PlaceOnAxis {
    double percent = 0; // of what the canvas is larger; 0 .. 100
    std::int32_t offset = 0;

    // Where a thing of that size begins. What would begin between two pixels moves to the nearest, from the middle
    // between them to the left or up.
    std::int32_t position(std::int32_t canvas, std::int32_t size) const;
    // The smallest canvas that the thing does not leave where it could be inside.
    std::int64_t canvasFor(std::int32_t size) const;
};

struct Place {
    PlaceOnAxis x, y;
};

// Nothing when the text is no place.
std::optional<Place> readPlace(std::string_view text);
// Throws UsageError when the text is no place.
Place parsePlace(std::string_view text);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
