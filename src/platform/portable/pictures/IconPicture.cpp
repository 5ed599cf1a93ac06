#include "platform/portable/pictures/IconPicture.h"
#include "platform/faults.h"
#include "platform/portable/gdi/StretchAxis.h"
#include <algorithm>
#include <array>
#include <new>
#include <vector>

namespace pixkit::platform {

namespace {

using Pixel = std::array<std::uint8_t, 4>; // B, G, R, A

// A row of a bitmap with 4 bytes a pixel, at least `width` of them; what the bitmap does not have is 0.
std::vector<Pixel> rowOf(const Bitmap& bitmap, std::size_t y, std::size_t width) {
    const std::size_t pixels = std::max(bitmap.width, width);
    (CheckedSize(pixels) * sizeof(Pixel)).inMemory(); // or no memory, which callers expect to be told in one way
    std::vector<Pixel> row(pixels);
    if (y < bitmap.height) convertRow(bitmap, bitmap.rowFromTop(y), row.data()->data(), 32, bitmap.width);
    return row;
}

bool hasAlpha(const Icon& icon) {
    if (!icon.color || icon.color->bitCount != 32) return false;
    for (std::size_t y = 0; y < icon.height(); ++y)
        if (std::ranges::any_of(rowOf(*icon.color, y, 0), [](const Pixel& pixel) { return pixel[3] != 0; }))
            return true;
    return false;
}

// `to` has as many of B, G, R, A as the target's depth.
void blend(std::span<std::uint8_t> to, const Pixel& from) noexcept {
    const unsigned alpha = from[3];
    for (std::size_t channel = 0; channel < to.size(); ++channel) {
        const unsigned value = channel == 3 ? 255U : from[channel];
        to[channel] = static_cast<std::uint8_t>((value * alpha + to[channel] * (255 - alpha) + 127) / 255);
    }
}

void mask(std::span<std::uint8_t> to, const Pixel& from, bool showsTarget) noexcept {
    for (std::size_t channel = 0; channel < std::min<std::size_t>(to.size(), 3); ++channel)
        to[channel] = static_cast<std::uint8_t>((showsTarget ? to[channel] : 0) ^ from[channel]);
    if (to.size() == 4 && !showsTarget) to[3] = 255;
}

void drawIcon(const Icon& icon, const Bitmap& target, const StretchAxis& across, const StretchAxis& down) {
    const std::size_t step = target.bitCount / 8U;
    const bool blends = hasAlpha(icon);
    for (std::int64_t y = down.first; y < down.last; ++y) {
        const std::size_t sourceY = down.sourceOf(y);
        const auto masks = rowOf(*icon.mask, sourceY, icon.width());
        const auto colors = icon.color ? rowOf(*icon.color, sourceY, 0) : rowOf(*icon.mask, icon.height() + sourceY, 0);
        std::uint8_t* const row = target.rowFromTop(static_cast<std::size_t>(y));
        for (std::int64_t x = across.first; x < across.last; ++x) {
            const std::size_t sourceX = across.sourceOf(x);
            const std::span to(row + static_cast<std::size_t>(x) * step, step);
            if (blends) {
                blend(to, colors[sourceX]);
            } else {
                mask(to, colors[sourceX], masks[sourceX][0] != 0);
            }
        }
    }
}

} // namespace

std::int32_t IconPicture::Width() const noexcept {
    const auto icon = findIcon(m_icon);
    return icon ? static_cast<std::int32_t>(icon->width()) : 0;
}

std::int32_t IconPicture::Height() const noexcept {
    const auto icon = findIcon(m_icon);
    return icon ? static_cast<std::int32_t>(icon->height()) : 0;
}

bool IconPicture::Render(Handle dc, std::int32_t x, std::int32_t y, std::int32_t width,
                         std::int32_t height) const noexcept {
    if (width <= 0 || height <= 0 || faultDue(SeamCall::renderPicture)) return false;
    const auto icon = findIcon(m_icon);
    const ObjectRef target = findSelectedBitmap(dc);
    if (!icon || !target || target->bitmap->bitCount == 8) return false;
    const Bitmap& to = *target->bitmap;
    try {
        drawIcon(*icon, to, StretchAxis(x, width, icon->width(), to.width),
                 StretchAxis(y, height, icon->height(), to.height));
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
