#include "platform/text.h"
#include <algorithm>
#include <cmath>

namespace pixkit::platform {

FontRecord recordOf(const StdFont& font) {
    constexpr double pixelsPerPoint = 96.0 / 72.0;
    constexpr double mostPixels = 100'000; // far beyond what anybody sees
    const double pixels = std::isfinite(font.Size) ? std::clamp(font.Size * pixelsPerPoint, 0.0, mostPixels) : 0.0;
    return {.Name = font.Name,
            .height = -std::max(static_cast<std::int32_t>(std::lround(pixels)), 1), // 0 would be another size
            .weight = font.Bold ? std::max<std::int32_t>(font.Weight, 700) : font.Weight,
            .italic = font.Italic,
            .underline = font.Underline,
            .strikeOut = font.Strikethrough,
            .charSet = static_cast<std::uint8_t>(font.Charset)};
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
