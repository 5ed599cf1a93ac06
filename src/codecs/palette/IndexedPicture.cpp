#include "codecs/palette/IndexedPicture.h"
#include "coding/ColorIndexes.h"
#include "coding/Diffusion.h"
#include "kernels/kernels.h"
#include <algorithm>

namespace pixkit {

namespace {

// Of a pixel in straight colours, without its alpha.
std::uint32_t colorOf(const std::uint8_t* pixel) noexcept {
    return pixel[0] | std::uint32_t{pixel[1]} << 8 | std::uint32_t{pixel[2]} << 16;
}

constexpr int webSafeStep = 51;
constexpr std::uint8_t webSafeTransparent = 216;

} // namespace

StraightRows::StraightRows(ConstPixelView image, bool hasAlpha, std::uint8_t tolerance)
    : m_image(image), m_hasAlpha(hasAlpha), m_tolerance(tolerance) {
    if (hasAlpha) m_straight.resize(image.width * 4);
}

const std::uint8_t* StraightRows::operator[](std::size_t y) {
    const std::uint8_t* row = m_image.rowFromTop(y);
    if (!m_hasAlpha) return row;
    kernels::table().unpremultiply(m_straight.data(), row, m_image.width);
    return m_straight.data();
}

std::optional<IndexedPicture> exactPicture(StraightRows& rows, std::size_t mostColors) {
    IndexedPicture picture;
    picture.indexes.resize(rows.width() * rows.height());
    ColorIndexes colors(mostColors);
    // Beside transparent pixels there are at most 255 colours, none of which has this index; their own is known last.
    constexpr std::uint8_t clear = 255;
    bool hasClear = false;
    std::uint8_t* out = picture.indexes.data();
    for (std::size_t y = 0; y < rows.height(); ++y) {
        const std::uint8_t* pixel = rows[y];
        for (std::size_t x = 0; x < rows.width(); ++x, pixel += 4, ++out) {
            if (rows.isTransparent(pixel)) {
                hasClear = true;
                *out = clear;
                continue;
            }
            const auto index = colors.add(colorOf(pixel));
            if (!index) return {};
            *out = *index;
        }
    }
    for (const std::uint32_t color : colors.colors())
        picture.palette.push_back({static_cast<std::uint8_t>(color >> 16), static_cast<std::uint8_t>(color >> 8),
                                   static_cast<std::uint8_t>(color)});
    if (!hasClear) return picture;
    if (picture.palette.size() == mostColors) return {};
    picture.transparentIndex = static_cast<std::uint8_t>(picture.palette.size());
    picture.palette.push_back({});
    std::ranges::replace(picture.indexes, clear, *picture.transparentIndex);
    return picture;
}

IndexedPicture webSafePicture(StraightRows& rows) {
    IndexedPicture picture;
    for (int color = 0; color < webSafeTransparent; ++color) {
        const auto channel = [&](int level) { return static_cast<std::uint8_t>(level % 6 * webSafeStep); };
        picture.palette.push_back({channel(color / 36), channel(color / 6), channel(color)});
    }
    picture.indexes.resize(rows.width() * rows.height());
    Diffusion<3> errors(rows.width());
    for (std::size_t y = 0; y < rows.height(); ++y, errors.nextRow()) {
        const std::uint8_t* pixels = rows[y];
        std::uint8_t* out = picture.indexes.data() + y * rows.width();
        // To the right and to the left by turns, so that errors do not drift to one side.
        const int ahead = y % 2 == 0 ? 1 : -1;
        for (std::size_t i = 0; i < rows.width(); ++i) {
            const std::size_t x = ahead > 0 ? i : rows.width() - 1 - i;
            const std::uint8_t* pixel = pixels + 4 * x;
            if (rows.isTransparent(pixel)) { // nothing is seen of it, and nothing passed on
                out[x] = webSafeTransparent;
                picture.transparentIndex = webSafeTransparent;
                continue;
            }
            int index = 0;
            for (std::size_t channel = 3; channel-- > 0;) { // red first
                const int wanted = std::clamp(pixel[channel] + errors.owed(x, channel), 0, 255);
                const int level = (wanted + webSafeStep / 2) / webSafeStep;
                errors.spread(x, ahead, wanted - level * webSafeStep, channel);
                index = index * 6 + level;
            }
            out[x] = static_cast<std::uint8_t>(index);
        }
    }
    if (picture.transparentIndex) picture.palette.push_back({});
    return picture;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
