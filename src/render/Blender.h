// The software blender: draws premultiplied pixels over a device context or another image. Its integer arithmetic is
// exact, and the reference for every other way of drawing.
#pragma once
#include "platform/handle.h"
#include "shared/PixelView.h"
#include <algorithm>
#include <cstdint>
#include <optional>

namespace pixkit {

class cPixSheet;

// Columns left .. right - 1 and rows top .. bottom - 1, rows counted downwards. 64 bits hold the edges of every
// rectangle that 32-bit arguments describe.
struct PixelRect {
    std::int64_t left = 0, top = 0, right = 0, bottom = 0;

    std::int64_t width() const noexcept { return right - left; }
    std::int64_t height() const noexcept { return bottom - top; }
    bool isEmpty() const noexcept { return right <= left || bottom <= top; }
    // What lies in both.
    PixelRect cut(const PixelRect& other) const noexcept {
        return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
                std::min(bottom, other.bottom)};
    }
    PixelRect moved(std::int64_t x, std::int64_t y) const noexcept {
        return {left + x, top + y, right + x, bottom + y};
    }
};

// What drawing can reach: the image of the host, or without a host the clip box of the device context, which may be
// empty and, where the context's origin was moved, start anywhere. Nothing is worked out that lies outside of it.
// Nothing for a host without an image or a device context that is none.
std::optional<PixelRect> spt_DestinationLimits(platform::Handle destinationDC, const cPixSheet* tHost) noexcept;

// Draws the rectangle of `source` at SrcX, SrcY over the one of its size at destX, destY; the y count rows from the top
// of the picture. What lies outside of source or destination is left out. GlobalAlpha is 2 .. 255 (0 and 1 work too).
// The lightness adjustment (-100 .. 100 per cent) is applied first, then the gray formula (gsclNone = none).
//
// Of a host all four channels are blended, alpha by the same rule; what it says of itself (Alpha, ImageType) stays. It
// may be the image that `source` views. A device context's pixels are blended as 24-bit ones: it keeps no alpha.
//
// True when the blend ran to its end, even when there was nothing to draw; false, with nothing drawn, when the
// destination cannot be read or is none, and when it cannot be written. Throws std::bad_alloc.
bool spt_Win9xBlend(platform::Handle destinationDC, ConstPixelView source, std::int32_t SrcX, std::int32_t SrcY,
                    std::int32_t destX, std::int32_t destY, std::int32_t destWidth, std::int32_t destHeight,
                    std::int32_t GlobalAlpha, cPixSheet* tHost, std::int32_t grayScale, float lightAdj);

} // namespace pixkit
