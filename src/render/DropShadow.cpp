// The soft shadow of a picture's silhouette.
#include "kernels/kernels.h"
#include "shared/Colors.h"
#include "shared/checked.h"
#include "surface/attempt.h"
#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace pixkit {

namespace {

using Shades = std::array<std::uint8_t, 256 * 4>;

// The colour premultiplied by each alpha.
Shades shadesOf(std::int32_t Color) {
    const ColorChannels channels = iparseColorChannels(Color);
    Shades shades;
    for (std::size_t alpha = 0; alpha < 256; ++alpha) {
        std::uint8_t* const pixel = &shades[alpha * 4];
        pixel[0] = static_cast<std::uint8_t>(channels.b * alpha / 255);
        pixel[1] = static_cast<std::uint8_t>(channels.g * alpha / 255);
        pixel[2] = static_cast<std::uint8_t>(channels.r * alpha / 255);
        pixel[3] = static_cast<std::uint8_t>(alpha);
    }
    return shades;
}

// The box of a shadow pixel reaches back 2 * depth rows and columns, in the store's row order as well as the picture's.
// One sum a column moves down with it, one tally moves along the sums: the depth costs nothing.
void castShadow(PixelView shadow, ConstPixelView picture, const Shades& shades) {
    const kernels::Table& kernel = kernels::table();
    const std::size_t window = shadow.width - picture.width + 1;
    std::vector<std::uint16_t> sums(shadow.width + window); // with columns of nothing on both sides of the picture's
    for (std::size_t y = 0; y < shadow.height; ++y) {
        const std::uint8_t* const entering = y < picture.height ? picture.row(y) : nullptr;
        const std::uint8_t* const leaving = y >= window ? picture.row(y - window) : nullptr;
        kernel.slideAlphaSums(sums.data() + window, entering, leaving, picture.width);
        kernel.shadeBoxes(shadow.row(y), sums.data(), shadow.width, window, shades.data());
    }
}

} // namespace

std::unique_ptr<cPixSheet> cPixSheet::CreateDropShadow(std::int32_t blurDepth, std::int32_t Color) const noexcept {
    std::unique_ptr<cPixSheet> result;
    attempt(Call(*this, "CreateDropShadow", "blurDepth, Color", blurDepth, Color), [&] {
        const ConstPixelView picture = HostAccess::pixels(*this);
        if (!picture) return refused(noImage);
        const std::int32_t t2xBlur = 2 * std::clamp(blurDepth, 0, 10);
        const std::int32_t width = longOrOverflow(std::int64_t{state().m_Width} + t2xBlur);
        const std::int32_t height = longOrOverflow(std::int64_t{state().m_Height} + t2xBlur);
        auto shadowDIB = std::make_unique<cPixSheet>();
        shadowDIB->state().m_limits = state().m_limits;
        if (!shadowDIB->InitializeDIB(width, height)) return shadowDIB->state().m_outcome;
        castShadow(HostAccess::pixels(*shadowDIB), picture, shadesOf(Color));
        // Without a blur the silhouette has the picture's own alpha.
        shadowDIB->state().m_AlphaImage = t2xBlur == 0 ? state().m_AlphaImage : AlphaComplex;
        // The shadow is drawn by the same means as its picture.
        shadowDIB->state().m_StretchQuality = state().m_StretchQuality;
        HostAccess::drawLike(*shadowDIB, *this);
        result = std::move(shadowDIB);
        return done();
    });
    return result;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
