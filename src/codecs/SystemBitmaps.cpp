#include "codecs/SystemBitmaps.h"
#include "coding/RowBytes.h"
#include "kernels/kernels.h"
#include "shared/Colors.h"
#include <cstring>

namespace pixkit {

namespace {

void straightRow(std::uint8_t* out, const std::uint8_t* pixels, std::size_t count) {
    kernels::table().unpremultiply(out, pixels, count);
    for (std::size_t i = 0; i < count; ++i, out += 4)
        if (out[3] == 0) std::memset(out, 0, 4);
}

void copyRows(std::uint8_t* out, std::size_t stride, const SourcePicture& picture, std::int32_t style) {
    const ConstPixelView image = picture.pixels;
    for (std::size_t y = 0; y < image.height; ++y, out += stride) {
        if (picture.alpha == AlphaNone) {
            std::memcpy(out, image.row(y), stride);
            kernels::table().setOpaque(out, image.width);
        } else if (style == pictStraight) {
            straightRow(out, image.row(y), image.width);
        } else {
            std::memcpy(out, image.row(y), stride);
        }
    }
}

void flattenRows(std::uint8_t* out, std::size_t stride, const SourcePicture& picture, std::int32_t backColor) {
    const ConstPixelView image = picture.pixels;
    if (picture.alpha != AlphaNone)
        return iparseBlendImageToColor(image, backColor, {out, stride * image.height}, true);
    for (std::size_t y = 0; y < image.height; ++y, out += stride)
        kernels::table().pack24(out, image.row(y), image.width, false);
}

} // namespace

Outcome makeBitmap(const SourcePicture& picture, std::int32_t style, std::int32_t backColor,
                   platform::UniqueBitmap& bitmap) {
    if (style < pictPremultiplied || style > pictFlat) return refused("there are no bitmaps of that style");
    const ConstPixelView image = picture.pixels;
    const std::uint16_t bitCount = style == pictFlat ? 24 : 32;
    void* bits = nullptr;
    bitmap.reset(platform::CreateDIBSection(0,
                                            {.biWidth = static_cast<std::int32_t>(image.width),
                                             .biHeight = static_cast<std::int32_t>(image.height),
                                             .biBitCount = bitCount},
                                            &bits));
    if (!bitmap) return refused(noMemoryForPixels);
    auto* const out = static_cast<std::uint8_t*>(bits);
    const auto stride = static_cast<std::size_t>(paddedRowBytes(image.width, bitCount));
    if (style == pictFlat) {
        flattenRows(out, stride, picture, backColor);
    } else {
        copyRows(out, stride, picture, style);
    }
    return done();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
