// Cutting off transparent borders.
#include "surface/attempt.h"
#include <cstring>

namespace pixkit {

namespace {

bool isClear(const std::uint8_t* pixels, std::size_t count) {
    std::uint8_t alphas = 0; // looked at in the end only, which lets the compiler take many pixels at once
    for (std::size_t i = 0; i < count; ++i)
        alphas |= pixels[4 * i + 3];
    return alphas == 0;
}

// What is left when the sides of `options` lose their transparent rows and columns; empty when all is transparent.
Rect visibleBounds(ConstPixelView image, std::int32_t options) {
    std::size_t top = 0;
    std::size_t bottom = image.height;
    while (bottom > 0 && isClear(image.rowFromTop(bottom - 1), image.width))
        --bottom;
    while (top < bottom && isClear(image.rowFromTop(top), image.width))
        ++top;
    if (top == bottom) return {};
    std::size_t left = image.width;
    std::size_t right = 0;
    for (std::size_t y = top; y < bottom; ++y) {
        // Only what could still be visible further out than in the rows before.
        const std::uint8_t* const row = image.rowFromTop(y);
        std::size_t x = 0;
        while (x < left && row[4 * x + 3] == 0)
            ++x;
        left = x;
        x = image.width;
        while (x > right && row[4 * x - 1] == 0)
            --x;
        right = x;
    }
    Rect bounds = image.rect();
    if ((options & trimLeft) != 0) bounds.left = static_cast<std::int64_t>(left);
    if ((options & trimTop) != 0) bounds.top = static_cast<std::int64_t>(top);
    if ((options & trimRight) != 0) bounds.right = static_cast<std::int64_t>(right);
    if ((options & trimBottom) != 0) bounds.bottom = static_cast<std::int64_t>(bottom);
    return bounds;
}

} // namespace

bool cPixSheet::TrimImage(std::int32_t TrimOptions, bool ReportOnly, TrimRectangle* Kept) noexcept {
    return attempt(Call(*this, "TrimImage", "TrimOptions, ReportOnly, Kept", TrimOptions, ReportOnly, Kept), [&] {
        const ConstPixelView image = HostAccess::pixels(*this);
        if (!image) return refused(noImage);
        if ((TrimOptions & trimAll) == 0) return refused("no side was named");
        const Rect bounds = visibleBounds(image, TrimOptions);
        if (bounds.isEmpty()) return refused("all of the image is transparent");
        const TrimRectangle kept = {static_cast<std::int32_t>(bounds.left), static_cast<std::int32_t>(bounds.top),
                                    static_cast<std::int32_t>(bounds.width()),
                                    static_cast<std::int32_t>(bounds.height())};
        if (!ReportOnly && (kept.Width != state().m_Width || kept.Height != state().m_Height)) {
            cPixSheet trimmed;
            trimmed.state().m_isUnattended = state().m_isUnattended;
            if (!trimmed.InitializeDIB(kept.Width, kept.Height)) return trimmed.state().m_outcome;
            const PixelView target = HostAccess::pixels(trimmed);
            const ConstPixelView source = image.part(bounds);
            for (std::size_t y = 0; y < target.height; ++y)
                std::memcpy(target.row(y), source.row(y), target.stride);
            state().pvReplaceImage(trimmed.state(), {state().m_hotspot.x - kept.x, state().m_hotspot.y - kept.y});
        }
        if (Kept != nullptr) *Kept = kept;
        return done();
    });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
