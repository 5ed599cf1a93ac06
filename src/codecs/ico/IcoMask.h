// What the colours of an icon and its AND mask make together.
#pragma once
#include "shared/PixelView.h"
#include "shared/enumerations.h"
#include <cstdint>
#include <span>

namespace pixkit {

// The screen under an icon is ANDed with the mask and XORed with the colours, so a pixel is (mask, colour): clear, any
// = the colour; set, black = what is beneath; set, other = the inverse of what is beneath.
//
// `pixels` hold opaque colours, `mask` one byte for each of them in the same order, not 0 where the bit is set. Pixels
// under the mask become 0, 0, 0, 0. A picture cannot invert what will be beneath it, so those that should are
// transparent as well, unless nothing else of the picture shows, as in the usual text cursor: then they become what
// one sees of them over white, opaque. Returns AlphaSimple if anything became transparent, else AlphaNone.
AlphaTypeEnum applyIcoMask(PixelView pixels, std::span<const std::uint8_t> mask);

class cPixSheet;

// The last step of reading an icon whose colours are in the host, alpha not applied to them.
// By their alpha, if any is not 0: premultiplies as iparseValidateAlphaChannel decides. False, and nothing done,
// otherwise.
bool completeIconByAlpha(cPixSheet& host, bool isCursor);
// By the mask, as above; alpha bytes do not count.
void completeIconByMask(cPixSheet& host, std::span<const std::uint8_t> mask, bool isCursor);

} // namespace pixkit
// SPDX-License-Identifier: MIT
