// What this GDI+ does right. Makers, versions and imitations differ, and none of them says what it gets wrong: so each
// ability is tried once, on a few pixels, when it is first needed.
#pragma once
#include "gdiplus/Session.h"

namespace pixkit {

enum class GdiplusAbility : std::uint8_t {
    blending,      // pixels and opacity, within 2 a channel of the component's blender
    contexts,      // the same onto device contexts
    stretching,    // nearest pixels
    interpolating, // other sizes, up to their edges
    turning,       // by any angle, clockwise about the centre
    quarterTurns,  // which keep every pixel of an unstretched picture
    jpegQuality,
    count
};

// Found out once for each library. False also where it could not be found out, which then is tried again.
bool hasAbility(const GdiplusSession& session, GdiplusAbility ability) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
