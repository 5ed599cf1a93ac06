// Effects on the pixels in place.
#include "diagnostics/guard.h"
#include "kernels/kernels.h"
#include "render/PixelWorkers.h"
#include "shared/AlphaChannel.h"
#include "shared/Colors.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

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
    return guarded(Call(*this, "MakeGrayScale", "Formula", Formula), false, [&] {
        const PixelView image = HostAccess::pixels(*this);
        if (!image || Formula == gsclNone) return false;
        const kernels::GrayWeights weights = iparseGrayScaleRatios(Formula);
        forEachRow(image, [&](std::uint8_t* row) { kernels::table().grayscale(row, image.width, weights); });
        return true;
    });
}

bool cPixSheet::MakeImageInverse() noexcept {
    return guarded(Call(*this, "MakeImageInverse"), false, [&] {
        const PixelView image = HostAccess::pixels(*this);
        if (!image) return false;
        forEachRow(image, [&](std::uint8_t* row) { kernels::table().invert(row, image.width); });
        return true;
    });
}

bool cPixSheet::MakeLighterDarker(float Percent) noexcept {
    return guarded(Call(*this, "MakeLighterDarker", "Percent", Percent), false, [&] {
        const PixelView image = HostAccess::pixels(*this);
        // A percentage out of range is ignored, not held at the limit; the negated test catches a NaN as well.
        if (!image || !(Percent >= -100.0F && Percent <= 100.0F) || Percent == 0.0F) return false;
        spt_LightenDarken(Percent, image, image);
        return true;
    });
}

bool cPixSheet::MakeTransparent(std::int32_t TransparentColor, bool Revert) noexcept {
    return guarded(Call(*this, "MakeTransparent", "TransparentColor, Revert", TransparentColor, Revert), false, [&] {
        const PixelView image = HostAccess::pixels(*this);
        if (!image) return false;
        const ColorChannels channels = iparseColorChannels(TransparentColor);
        const OpaquePixel opaque = {channels.b, channels.g, channels.r, 255};
        if (Revert) {
            replaceEverywhere(image, emptyPixel, opaque);
            m_AlphaImage = iparseValidateAlphaChannel(image, true, imgNone).bIsAlpha;
        } else if (replaceEverywhere(image, opaque, emptyPixel) != 0) {
            // AlphaSimple even where partial alpha is present: the key makes a mask, and nothing is scanned here.
            m_AlphaImage = AlphaSimple;
            if (m_Format == imgBitmap) m_Format = imgBmpPARGB;
        }
        return true;
    });
}

bool cPixSheet::BlendToColor(std::int32_t BlendColor, std::int32_t BlendOpacity) noexcept {
    return guarded(Call(*this, "BlendToColor", "BlendColor, BlendOpacity", BlendColor, BlendOpacity), false, [&] {
        const PixelView image = HostAccess::pixels(*this);
        if (!image || BlendOpacity < 1) return false;
        const auto opacity = static_cast<std::uint32_t>(std::min(BlendOpacity, 100));
        const ColorChannels channels = iparseColorChannels(BlendColor);
        const std::uint8_t colour[3] = {channels.b, channels.g, channels.r};
        forEachRow(image, [&](std::uint8_t* row) {
            // Alpha scales the already premultiplied colour a second time, so translucent pixels come out darker; the
            // callers' pictures depend on it.
            kernels::table().blendToColour(row, image.width, colour, opacity);
        });
        return true;
    });
}

bool cPixSheet::MirrorImage(bool MirrorAxisX, bool MirrorAxisY) noexcept {
    return guarded(Call(*this, "MirrorImage", "MirrorAxisX, MirrorAxisY", MirrorAxisX, MirrorAxisY), false, [&] {
        const PixelView image = HostAccess::pixels(*this);
        if (!image || (!MirrorAxisX && !MirrorAxisY)) return false;
        const std::size_t bytes = image.stride * image.height;
        const auto mirrorBytes = std::make_unique_for_overwrite<std::uint8_t[]>(bytes);
        spt_MirrorDIB({mirrorBytes.get(), image.width, image.height, image.stride}, image, MirrorAxisX, MirrorAxisY);
        std::memcpy(image.bits, mirrorBytes.get(), bytes);
        return true;
    });
}

} // namespace pixkit
