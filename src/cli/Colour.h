// Colours as people write them.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pixkit {
class cPixSheet;
}

namespace pixkit::cli {

struct Colour {
    std::int32_t rgb = 0;     // a COLORREF: red in the lowest byte
    std::uint8_t alpha = 255; // straight: rgb is as written, whatever alpha is
};

// '#rgb', '#rgba', '#rrggbb', '#rrggbbaa', 'rgb(255,128,0)', 'rgba(255,128,0,0.5)' with numbers or percentages, a name
// of CSS, or 'transparent'. Throws UsageError for anything else.
Colour parseAnyColour(std::string_view text);
// The same for what has to be opaque, as a COLORREF.
std::int32_t parseColour(std::string_view text);
// '#rrggbb' of a COLORREF.
std::string formatColour(std::int32_t colour);

// The names of CSS.
std::vector<std::string_view> colourNames();

// Gives every pixel the colour; Alpha stays.
void fillWith(cPixSheet& sheet, const Colour& colour);

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
