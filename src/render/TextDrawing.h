// Text drawn on a device context or an image.
#pragma once
#include "diagnostics/Outcome.h"
#include "platform/handle.h"
#include "platform/text.h"
#include "render/TextLayout.h"
#include <cstdint>
#include <string_view>

namespace pixkit {

class cPixSheet;

// One call of DrawText, but for the font.
struct TextDrawing {
    platform::Handle destinationDC = 0;
    cPixSheet* destHostDIB = nullptr; // instead of the device context, where it is not null
    std::string_view Text;
    std::int32_t destX = 0, destY = 0;
    TextForm form; // with the rectangle's size
    std::int32_t Color = 0;
    std::int32_t Opacity = 100;
    float Angle = 0; // finite
};

// Draws it in the means of `settings`. Of what the text covers only what can be seen is worked out. Throws
// std::bad_alloc.
Outcome spt_DrawText(const cPixSheet& settings, platform::TextFont& font, const TextDrawing& drawing);

} // namespace pixkit
// SPDX-License-Identifier: MIT
