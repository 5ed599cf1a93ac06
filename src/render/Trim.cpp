// Cutting off transparent borders.
#include "diagnostics/guard.h"
#include "platform/gdi.h"
#include "surface/HostAccess.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <cstring>

namespace pixkit {

namespace {

// Half-open, y counted from the top.
struct Bounds {
    std::size_t left, top, right, bottom;
};

bool isClear(const std::uint8_t* pixels, std::size_t count) {
    std::uint8_t alphas = 0; // looked at in the end only, which lets the compiler take many pixels at once
    for (std::size_t i = 0; i < count; ++i)
        alphas |= pixels[4 * i + 3];
    return alphas == 0;
}

// What is left when the sides of `options` lose their transparent rows and columns; nothing is left where top meets
// bottom.
Bounds visibleBounds(ConstPixelView image, std::int32_t options) {
    Bounds bounds{0, 0, image.width, image.height};
    while (bounds.bottom > 0 && isClear(image.rowFromTop(bounds.bottom - 1), image.width))
        --bounds.bottom;
    while (bounds.top < bounds.bottom && isClear(image.rowFromTop(bounds.top), image.width))
        ++bounds.top;
    std::size_t left = image.width;
    std::size_t right = 0;
    for (std::size_t y = bounds.top; y < bounds.bottom; ++y) {
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
    if (bounds.top == bounds.bottom) return bounds;
    if ((options & trimTop) == 0) bounds.top = 0;
    if ((options & trimBottom) == 0) bounds.bottom = image.height;
    if ((options & trimLeft) != 0) bounds.left = left;
    if ((options & trimRight) != 0) bounds.right = right;
    return bounds;
}

} // namespace

bool cPixSheet::TrimImage(std::int32_t TrimOptions, bool ReportOnly, TrimRectangle* Kept) noexcept {
    return guarded("TrimImage", false, [&] {
        const ConstPixelView image = HostAccess::pixels(*this);
        if (!image || (TrimOptions & trimAll) == 0) return false;
        platform::GdiFlush();
        const Bounds bounds = visibleBounds(image, TrimOptions);
        if (bounds.top == bounds.bottom) return false;
        const TrimRectangle kept = {static_cast<std::int32_t>(bounds.left), static_cast<std::int32_t>(bounds.top),
                                    static_cast<std::int32_t>(bounds.right - bounds.left),
                                    static_cast<std::int32_t>(bounds.bottom - bounds.top)};
        if (!ReportOnly && (kept.Width != m_Width || kept.Height != m_Height)) {
            cPixSheet trimmed;
            if (!trimmed.InitializeDIB(kept.Width, kept.Height)) return false;
            const PixelView target = HostAccess::pixels(trimmed);
            for (std::size_t y = 0; y < target.height; ++y)
                std::memcpy(target.rowFromTop(y), image.rowFromTop(bounds.top + y) + bounds.left * 4, target.stride);
            trimmed.m_AlphaImage = m_AlphaImage;
            trimmed.m_Format = m_Format;
            trimmed.m_ImageByteCache = std::move(m_ImageByteCache);
            trimmed.m_hotspot = {m_hotspot.x - kept.x, m_hotspot.y - kept.y};
            SwapDIBs(
                &trimmed); // what belongs to the instance stays: settings, Tag, a device context that holds the image
        }
        if (Kept != nullptr) *Kept = kept;
        return true;
    });
}

} // namespace pixkit
