// A picture on the canvas of `compose`: which, where, how large and how opaque.
#pragma once
#include "cli/Place.h"
#include "cli/Scaling.h"
#include <cstdint>
#include <string>

namespace pixkit::cli {

struct ComposeLayer {
    std::string file;
    Place place;                // outside of the canvas, too
    std::int32_t opacity = 100; // per cent, 1 .. 100
    Scaling scaling;
};

// FILE[@PLACE][:PART]..., where PART is one of
//   P%, opacity=P%              how opaque, 1 to 100
//   WxH, Wx, xH                 a box to fit, in pixels, or with % of the canvas
//   scale=P%                    of the picture's own size
//   fit, down, stretch, fill    how it fits the box, or without one the canvas: in proportion as large as goes in
//                               (without a word), the same but never enlarged, out of proportion, in proportion so that
//                               nothing of the box is left bare
// Names of files may hold all of these signs. So the text is read from its end, and what does not read as a part or a
// place, or comes a second time, belongs to the name. Throws UsageError, also when that leaves a name which is no file
// while its beginning is one.
ComposeLayer parseLayer(const std::string& text);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
