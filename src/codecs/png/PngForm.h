// The smallest form in which a PNG file holds a picture exactly: colour type, bit depth, palette, transparent colour.
#pragma once
#include "coding/ColorIndexes.h"
#include "shared/PixelView.h"
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace pixkit {

// PNG standard, 11.2.2
enum class PngColorType : std::uint8_t { gray = 0, rgb = 2, palette = 3, grayAlpha = 4, rgba = 6 };

// Pixels of the store as 32-bit numbers 0xAARRGGBB; all clear ones are 0.
using PngPixel = std::uint32_t;

// The index of each colour of a palette.
class PngPaletteIndex {
  public:
    // Notes a colour; false when it would be the 257th.
    bool add(PngPixel color) noexcept { return m_colors.add(color).has_value(); }
    bool has(PngPixel color) const noexcept { return m_colors.has(color); }
    std::uint8_t indexOf(PngPixel color) const noexcept { return m_place[m_colors.indexOf(color)]; }
    // In the order in which they are written: clear and translucent ones first, then from dark to bright. Indexes are
    // good from here on, and no colour can be added any more.
    std::vector<PngPixel> arrange();

  private:
    ColorIndexes m_colors;
    std::array<std::uint8_t, ColorIndexes::mostColors> m_place{}; // in the palette, of the colours as they came
};

struct PngForm {
    PngColorType colorType;
    unsigned bitDepth;
    std::vector<PngPixel> palette;                         // stored colours, premultiplied
    std::shared_ptr<const PngPaletteIndex> indexes;        // of the palette
    std::optional<std::array<std::uint8_t, 3>> clearColor; // R, G, B, or gray thrice: stands for clear pixels

    std::size_t bitsPerPixel() const noexcept;
    // To the byte of the pixel on the left, for the filters.
    std::size_t filterStep() const noexcept { return bitsPerPixel() < 8 ? 1 : bitsPerPixel() / 8; }
};

// The forms worth trying, the most promising first; the last one is never a palette. Without `hasAlpha` the alpha bytes
// mean nothing. A background, R, G, B, counts as a colour of the picture, so that the form can say it.
std::vector<PngForm> pngFormsOf(ConstPixelView image, bool hasAlpha,
                                const std::optional<std::array<std::uint8_t, 3>>& background);

// `count` pixels of the store as samples of the form, packed into bytes; `scratch` has room for 4 * count bytes.
void pngSamplesOf(const PngForm& form, bool hasAlpha, std::uint8_t* samples, const std::uint8_t* pixels,
                  std::size_t count, std::uint8_t* scratch);

// The samples 0xAARRGGBB that stand for a stored pixel: straight colours that are read as it was.
PngPixel pngStraight(PngPixel pixel) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
