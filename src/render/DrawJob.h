// One drawing, put in order once and passed by reference along every path.
#pragma once
#include "diagnostics/Outcome.h"
#include "platform/handle.h"
#include "shared/PixelView.h"
#include "shared/Rect.h"
#include "shared/enumerations.h"
#include <cstdint>

namespace pixkit {

class cPixSheet;

inline constexpr Reason noHostImage = "the object to draw on has no image";

// What remains to be drawn: the rectangle `source` of `image` over the rectangle `destination`. Mirroring and
// resampling each do their share into a buffer and leave the job of drawing from there; the blender does the rest.
struct DrawJob {
    ConstPixelView image; // premultiplied
    Rect source;          // within the image, not empty

    // The host's image, or, without a host, a device context.
    platform::Handle destinationDC = 0;
    cPixSheet* destHostDIB = nullptr;
    Rect destination; // not empty; may lie anywhere
    Rect limits = {}; // what drawing can reach, as findLimits() found it: nothing is worked out beyond

    bool mirrorsColumns = false, mirrorsRows = false;
    bool HighQuality = false; // sizes and angles interpolate
    float Angle = 0;          // degrees clockwise about the destination's centre; 0 for whole turns
    std::uint8_t globalAlpha = 255;
    std::int32_t grayScale = gsclNone;
    float LightAdjustment = 0; // -100 .. 100 per cent
    bool SetHalfTone = false;  // where the system stretches

    bool isMirroring() const noexcept { return mirrorsColumns || mirrorsRows; }
    bool isStretching() const noexcept {
        return destination.width() != source.width() || destination.height() != source.height();
    }
    Rect visible() const noexcept { return destination.cut(limits); }

    // Asks what can be drawn on: the image of the host, or the clip box of the device context, which may be empty and,
    // where the context's origin was moved, start anywhere. Waits for the system to finish what it draws into either.
    // Refuses a host without an image and a device context that is none.
    Outcome findLimits() noexcept;
    // From now on the job draws all of `pixels` over `where`, a rectangle of their size.
    void drawFrom(ConstPixelView pixels, const Rect& where) noexcept {
        image = pixels;
        source = pixels.rect();
        destination = where;
    }
};

// The factor 0 .. 255 for an opacity in per cent, 1 or more. Above 100 it starts again: 150 is 50, 200 is 100.
inline std::uint8_t globalAlphaOf(std::int32_t Opacity) noexcept {
    const std::int32_t percent = Opacity % 100 == 0 ? 100 : Opacity % 100;
    return static_cast<std::uint8_t>(percent * 255 / 100);
}

// Draws without the system's help, whatever is not rotated: mirrors, resamples and blends. Done when it was drawn, or
// nothing of it is to be seen; refuses where there is no destination and where the blender fails. Throws
// std::bad_alloc.
Outcome spt_DrawInSoftware(DrawJob& job);

} // namespace pixkit
// SPDX-License-Identifier: MIT
