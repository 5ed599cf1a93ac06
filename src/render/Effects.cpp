// Effects on the pixels in place.
#include "kernels/kernels.h"
#include "render/PixelWorkers.h"
#include "shared/AlphaChannel.h"
#include "shared/Colors.h"
#include "surface/attempt.h"
#include <algorithm>
#include <array>

namespace pixkit {

namespace {

using OpaquePixel = std::array<std::uint8_t, 4>;
constexpr OpaquePixel emptyPixel = {0, 0, 0, 0};

template <class RowFunction>
void forEachRow(const PixelView& image, RowFunction&& rowFunction) {
    for (std::size_t y = 0; y < image.height; ++y) {
        rowFunction(image.row(y));
    }
}

std::size_t replaceEverywhere(const PixelView& image, const OpaquePixel& from, const OpaquePixel& to) {
    std::size_t replaced = 0;
    forEachRow(image, [&](std::uint8_t* row) {
        replaced += kernels::table().replacePixel(row, image.width, from.data(), to.data());
    });
    return replaced;
}

} // namespace

bool cPixSheet::MakeGrayScale(std::int32_t Formula) noexcept {
    return attempt(Call(*this, "MakeGrayScale", "Formula", Formula), [&] {
        const PixelView image = HostAccess::pixels(*this);
        if (!image) return refused(noImage);
        if (Formula == gsclNone) return refused("no formula was named");
        const kernels::GrayWeights weights = iparseGrayScaleRatios(Formula);
        forEachRow(image, [&](std::uint8_t* row) { kernels::table().grayscale(row, image.width, weights); });
        return done();
    });
}

bool cPixSheet::MakeImageInverse() noexcept {
    return attempt(Call(*this, "MakeImageInverse"), [&] {
        const PixelView image = HostAccess::pixels(*this);
        if (!image) return refused(noImage);
        forEachRow(image, [&](std::uint8_t* row) { kernels::table().invert(row, image.width); });
        return done();
    });
}

bool cPixSheet::MakeLighterDarker(float Percent) noexcept {
    return attempt(Call(*this, "MakeLighterDarker", "Percent", Percent), [&] {
        const PixelView image = HostAccess::pixels(*this);
        if (!image) return refused(noImage);
        // A percentage out of range is ignored, not held at the limit; the negated test catches a NaN as well.
        if (!(Percent >= -100.0F && Percent <= 100.0F)) return refused("a percentage is from -100 to 100");
        if (Percent == 0.0F) return refused("0 per cent change nothing");
        spt_LightenDarken(Percent, image, image);
        return done();
    });
}

bool cPixSheet::MakeTransparent(std::int32_t TransparentColor, bool Revert) noexcept {
    return attempt(Call(*this, "MakeTransparent", "TransparentColor, Revert", TransparentColor, Revert), [&] {
        const PixelView image = HostAccess::pixels(*this);
        if (!image) return refused(noImage);
        const ColorChannels channels = iparseColorChannels(TransparentColor);
        const OpaquePixel opaque = {channels.b, channels.g, channels.r, 255};
        if (Revert) {
            replaceEverywhere(image, emptyPixel, opaque);
            state().m_AlphaImage = iparseValidateAlphaChannel(image, true, imgNone).bIsAlpha;
        } else if (replaceEverywhere(image, opaque, emptyPixel) != 0) {
            // AlphaSimple even where partial alpha is present: the key makes a mask, and nothing is scanned here.
            state().m_AlphaImage = AlphaSimple;
            if (state().m_Format == imgBitmap) state().m_Format = imgBmpPARGB;
        }
        return done();
    });
}

bool cPixSheet::BlendToColor(std::int32_t BlendColor, std::int32_t BlendOpacity) noexcept {
    return attempt(Call(*this, "BlendToColor", "BlendColor, BlendOpacity", BlendColor, BlendOpacity), [&] {
        const PixelView image = HostAccess::pixels(*this);
        if (!image) return refused(noImage);
        if (BlendOpacity < 1) return refused("less than 1 per cent changes nothing");
        const auto opacity = static_cast<std::uint32_t>(std::min(BlendOpacity, 100));
        const ColorChannels channels = iparseColorChannels(BlendColor);
        const std::uint8_t colour[3] = {channels.b, channels.g, channels.r};
        forEachRow(image, [&](std::uint8_t* row) {
            // Alpha scales the already premultiplied colour a second time, so translucent pixels come out darker; the
            // callers' pictures depend on it.
            kernels::table().blendToColour(row, image.width, colour, opacity);
        });
        return done();
    });
}

bool cPixSheet::MirrorImage(bool MirrorAxisX, bool MirrorAxisY) noexcept {
    return attempt(Call(*this, "MirrorImage", "MirrorAxisX, MirrorAxisY", MirrorAxisX, MirrorAxisY), [&] {
        const PixelView image = HostAccess::pixels(*this);
        if (!image) return refused(noImage);
        if (!MirrorAxisX && !MirrorAxisY) return refused("no axis was named");
        spt_MirrorInPlace(image, MirrorAxisX, MirrorAxisY);
        return done();
    });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
