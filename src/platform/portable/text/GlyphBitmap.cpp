#include "platform/portable/text/GlyphBitmap.h"
#include <algorithm>
#include <cmath>

namespace pixkit::platform {

namespace {

constexpr double mostPixels = 1 << 24; // of a scaled picture

std::uint32_t shadeAt(const FT_Bitmap& bitmap, std::size_t x, std::size_t y) noexcept {
    const std::uint8_t* row = bitmap.buffer + y * static_cast<std::size_t>(bitmap.pitch);
    switch (bitmap.pixel_mode) {
    case FT_PIXEL_MODE_MONO:
        return (row[x / 8] >> (7 - x % 8) & 1U) * 255;
    case FT_PIXEL_MODE_GRAY2:
        return (row[x / 4] >> (6 - x % 4 * 2) & 3U) * 85;
    case FT_PIXEL_MODE_GRAY4:
        return (row[x / 2] >> (4 - x % 2 * 4) & 15U) * 17;
    case FT_PIXEL_MODE_GRAY:
        return row[x];
    case FT_PIXEL_MODE_BGRA:
        return row[x * 4 + 3];
    default:
        return 0;
    }
}

// From where to where the pixels of a row, or of a column, are that one of the scaled ones stands for: one at least.
struct Stretch {
    std::size_t from, to;
};
Stretch stretchOf(std::size_t place, double scale, std::size_t length) noexcept {
    const auto from = std::min(static_cast<std::size_t>(static_cast<double>(place) / scale), length - 1);
    const auto to = std::min(static_cast<std::size_t>(static_cast<double>(place + 1) / scale), length);
    return {from, std::max(to, from + 1)};
}

std::uint8_t meanOf(const FT_Bitmap& bitmap, Stretch columns, Stretch rows) noexcept {
    std::uint64_t sum = 0;
    for (std::size_t y = rows.from; y < rows.to; ++y)
        for (std::size_t x = columns.from; x < columns.to; ++x)
            sum += shadeAt(bitmap, x, y);
    return static_cast<std::uint8_t>(sum / ((columns.to - columns.from) * (rows.to - rows.from)));
}

} // namespace

Subpixels lookOfBitmap(FT_Face face, std::uint32_t index, double scale) {
    if (FT_Load_Glyph(face, index, FT_LOAD_COLOR) != 0 || face->glyph->format != FT_GLYPH_FORMAT_BITMAP) return {};
    const FT_Bitmap& bitmap = face->glyph->bitmap;
    const double width = std::ceil(bitmap.width * scale);
    const double height = std::ceil(bitmap.rows * scale);
    if (bitmap.pitch < 0 || width < 1 || height < 1 || width * height > mostPixels) return {};
    const auto left = static_cast<std::int32_t>(std::floor(face->glyph->bitmap_left * scale));
    const auto top = static_cast<std::int32_t>(std::floor(-face->glyph->bitmap_top * scale));
    Subpixels look({left, top, left + static_cast<std::int32_t>(width), top + static_cast<std::int32_t>(height)});
    auto to = look.bytes.begin();
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
        const Stretch rows = stretchOf(y, scale, bitmap.rows);
        for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x)
            to = std::fill_n(to, 3, meanOf(bitmap, stretchOf(x, scale, bitmap.width), rows));
    }
    return look;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
