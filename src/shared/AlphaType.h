// What alpha bytes amount to, where all of them count.
#pragma once
#include "shared/PixelView.h"
#include "shared/enumerations.h"

namespace pixkit {

// AlphaNone when every pixel is opaque, AlphaSimple when the others are clear. Unlike iparseValidateAlphaChannel it
// takes a picture that is clear throughout for one.
AlphaTypeEnum alphaTypeOf(ConstPixelView pixels) noexcept;

// Puts together what a picture looks like over black and over white, both of one size, into the former: a pixel that
// shows all of the background is transparent, one that shows none is opaque, and between, the darker one is its colour
// premultiplied. Pixels that the picture made of their background, by inverting it, come out opaque.
AlphaTypeEnum alphaFromTwoBackgrounds(PixelView overBlack, ConstPixelView overWhite) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
