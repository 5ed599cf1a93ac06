// Colours as callers give them, formulas of gray, and palettes.
#pragma once
#include "kernels/kernels.h"
#include "shared/PixelView.h"
#include "shared/enumerations.h"
#include <cstdint>
#include <span>

namespace pixkit {

// The three channels of a COLORREF (red in bits 0-7, green 8-15, blue 16-23), taken bit by bit: negative values too.
struct ColorChannels {
    std::uint8_t b, g, r;
};
constexpr ColorChannels iparseColorChannels(std::int32_t Color) noexcept {
    const auto bits = static_cast<std::uint32_t>(Color);
    return {static_cast<std::uint8_t>(bits >> 16), static_cast<std::uint8_t>(bits >> 8),
            static_cast<std::uint8_t>(bits)};
}

// The weights of a formula; gsclNone gives 1, 1, 1, a value outside the enumeration the NTSC/PAL weights.
kernels::GrayWeights iparseGrayScaleRatios(std::int32_t Formula) noexcept;

// Flattens premultiplied pixels onto a colour: alpha 255 copies, 0 writes the fill, between: fill * (255 - alpha) / 255
// (truncated) + colour, held at 255. With `bitDepth24` the rows of `outStream` hold B, G, R and are padded to four
// bytes with 0; else B, G, R, 255. Rows are in the view's memory order; outStream must hold height rows of
// iparseByteAlignOnWord(bitDepth24 ? 24 : 32, width) bytes.
void iparseBlendImageToColor(ConstPixelView cHost, std::int32_t FillColor, std::span<std::uint8_t> outStream,
                             bool bitDepth24);

// Binary search in ascending colours; `PaletteItems` holds items 1 .. Count at its indexes 0 .. Count - 1. Returns the
// 1-based index of `Color` with isNew false, or where it would have to be inserted with isNew true (1 when Count is 0).
std::int32_t iparseFindColor(std::span<const std::int32_t> PaletteItems, std::int32_t Color, std::int32_t Count,
                             bool& isNew) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
