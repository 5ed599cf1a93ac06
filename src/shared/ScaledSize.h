// Which size of a picture fits where: the arithmetic of cPixSheet::ScaleImage.
#pragma once
#include "shared/checked.h"
#include "shared/enumerations.h"
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace pixkit {

// Width and height of a picture of `width` by `height` pixels, at least 1, in a place of the other size: that place's
// for ScaleStretch, the picture's own for what is no mode. What is too large for 32 bits throws std::overflow_error.
inline std::pair<std::int32_t, std::int32_t> scaledSize(std::int32_t width, std::int32_t height, std::int32_t destWidth,
                                                        std::int32_t destHeight, std::int32_t ScaleMode) {
    if (ScaleMode == ScaleStretch) return {destWidth, destHeight};
    if (ScaleMode != ScaleToSize && ScaleMode != scaleDownAsNeeded) return {width, height};
    // The ratios are held in single precision, which decides on which side of a whole size some results fall.
    auto ratioX = static_cast<float>(static_cast<double>(destWidth) / width);
    auto ratioY = static_cast<float>(static_cast<double>(destHeight) / height);
    if (ScaleMode == scaleDownAsNeeded && ratioX >= 1.0F && ratioY >= 1.0F) ratioX = ratioY = 1.0F;
    const auto scaled = [ratio = static_cast<double>(std::min(ratioX, ratioY))](std::int32_t side) {
        return longOrOverflow(static_cast<std::int64_t>(std::floor(ratio * side)));
    };
    return {scaled(width), scaled(height)};
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
