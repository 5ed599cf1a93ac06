#include "shared/AlphaType.h"
#include <algorithm>

namespace pixkit {

AlphaTypeEnum alphaTypeOf(ConstPixelView pixels) noexcept {
    AlphaTypeEnum type = AlphaNone;
    for (std::size_t y = 0; y < pixels.height; ++y) {
        const std::uint8_t* const row = pixels.row(y);
        for (std::size_t x = 0; x < pixels.width; ++x) {
            const std::uint8_t alpha = row[4 * x + 3];
            if (alpha != 0 && alpha != 255) return AlphaComplex;
            if (alpha == 0) type = AlphaSimple;
        }
    }
    return type;
}

AlphaTypeEnum alphaFromTwoBackgrounds(PixelView overBlack, ConstPixelView overWhite) noexcept {
    for (std::size_t y = 0; y < overBlack.height; ++y) {
        std::uint8_t* black = overBlack.row(y);
        const std::uint8_t* white = overWhite.row(y);
        for (std::size_t x = 0; x < overBlack.width; ++x, black += 4, white += 4) {
            int shownThrough = 255; // in the channel that lets least through
            for (int channel = 0; channel < 3; ++channel)
                shownThrough = std::min(shownThrough, std::max(0, white[channel] - black[channel]));
            black[3] = static_cast<std::uint8_t>(255 - shownThrough);
        }
    }
    return alphaTypeOf(overBlack);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
