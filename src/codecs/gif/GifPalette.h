// Pictures of at most 256 colours: exact, with a palette that fits the picture, or with the web-safe palette.
#pragma once
#include "shared/PixelView.h"
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace pixkit {

// What a GIF file holds. Indexes stand in rows from the top.
struct GifPicture {
    using Color = std::array<std::uint8_t, 3>; // R, G, B

    std::vector<std::uint8_t> indexes;
    std::vector<Color> palette;                   // 1 .. 256
    std::optional<std::uint8_t> transparentIndex; // a palette entry too
};

// The picture's rows from the top as straight colours.
class GifRows {
  public:
    // Without `hasAlpha` alpha is not looked at; else a pixel whose alpha is below `tolerance` is transparent, and
    // every other opaque in its straight colour (channel * 255 \ alpha).
    GifRows(ConstPixelView image, bool hasAlpha, std::uint8_t tolerance);

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

// Nothing when the picture has more than 256 colours, transparency being one.
std::optional<GifPicture> gifExactPicture(GifRows& rows);
// For pictures that gifExactPicture refuses: each pixel in the nearest colour, or one that is hardly farther, of a full
// palette made for the picture. No dither.
GifPicture gifAdaptivePicture(GifRows& rows);
// The 216 colours that have 0, 51, 102, 153, 204 or 255 in each channel, red running slowest; errors are diffused.
GifPicture gifWebSafePicture(GifRows& rows);

} // namespace pixkit
