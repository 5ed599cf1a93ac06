// Pictures of at most 256 colours: exact, with a palette that fits the picture, or with the web-safe palette.
#pragma once
#include "shared/PixelView.h"
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace pixkit {

// A picture as GIF files and icons hold it. Indexes stand in rows from the top.
struct IndexedPicture {
    using Color = std::array<std::uint8_t, 3>; // R, G, B

    std::vector<std::uint8_t> indexes;
    std::vector<Color> palette;                   // at least one
    std::optional<std::uint8_t> transparentIndex; // a palette entry too, black
};

// The picture's rows from the top as straight colours.
class StraightRows {
  public:
    // Without `hasAlpha` alpha is not looked at; else a pixel whose alpha is below `tolerance` is transparent, and
    // every other opaque in its straight colour (channel * 255 \ alpha).
    StraightRows(ConstPixelView image, bool hasAlpha, std::uint8_t tolerance);

    std::size_t width() const noexcept { return m_image.width; }
    std::size_t height() const noexcept { return m_image.height; }
    // B, G, R and alpha of each pixel; good until the next call.
    const std::uint8_t* operator[](std::size_t y);
    bool isTransparent(const std::uint8_t* pixel) const noexcept { return m_hasAlpha && pixel[3] < m_tolerance; }

  private:
    ConstPixelView m_image;
    bool m_hasAlpha;
    std::uint8_t m_tolerance;
    std::vector<std::uint8_t> m_straight; // one row
};

// At most `mostColors`, up to 256, are in a palette; transparency is one of them. Nothing when the picture has more.
std::optional<IndexedPicture> exactPicture(StraightRows& rows, std::size_t mostColors = 256);
// For pictures that exactPicture refuses: each pixel in the nearest colour, or one that is hardly farther, of a full
// palette made for the picture. No dither.
IndexedPicture adaptivePicture(StraightRows& rows, std::size_t mostColors = 256);
// The 216 colours that have 0, 51, 102, 153, 204 or 255 in each channel, red running slowest; errors are diffused.
IndexedPicture webSafePicture(StraightRows& rows);

} // namespace pixkit
// SPDX-License-Identifier: MIT
