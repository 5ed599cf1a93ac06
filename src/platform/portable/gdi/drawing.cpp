// Drawing between memory device contexts.
#include "platform/faults.h"
#include "platform/gdi.h"
#include "platform/portable/gdi/GdiObjects.h"
#include <algorithm>
#include <utility>

namespace pixkit::platform {

namespace {

using Edge = std::int64_t; // what 32-bit coordinates and sizes add up to

// What a device context draws on: the bitmap in it, kept alive for the length of a call. The screen has no pixels, and
// the stock bitmap shows none.
class Surface {
  public:
    explicit Surface(Handle dc) noexcept : m_object(findSelectedBitmap(dc)) {}

    const Bitmap* bitmap() const noexcept { return m_object ? m_object->bitmap.get() : nullptr; }
    Edge width() const noexcept { return m_object ? static_cast<Edge>(bitmap()->width) : 0; }
    Edge height() const noexcept { return m_object ? static_cast<Edge>(bitmap()->height) : 0; }
    std::uint16_t bits() const noexcept { return m_object ? bitmap()->bitCount : std::uint16_t{32}; }
    std::uint8_t* pixel(Edge x, Edge y) const noexcept {
        return bitmap()->rowFromTop(static_cast<std::size_t>(y)) + static_cast<std::size_t>(x) * (bits() / 8U);
    }

  private:
    ObjectRef m_object;
};

// A run of places on one axis, cut to an extent; `from` is where it starts in what is drawn.
struct Span {
    Edge to, from, count;
    void cut(Edge extent, Edge sourceExtent) noexcept {
        const Edge before = std::max({Edge{0}, -to, -from});
        to += before;
        from += before;
        count = std::min({count - before, extent - to, sourceExtent - from});
    }
};

// Places of one axis that overlap.
bool meet(Edge first, Edge firstCount, Edge second, Edge secondCount) noexcept {
    return first < second + secondCount && second < first + firstCount;
}

void blendPixel(std::uint8_t* to, std::uint16_t toBits, const std::uint8_t* from, std::uint16_t fromBits,
                BlendFunction blend) noexcept {
    const unsigned scale = blend.SourceConstantAlpha;
    const unsigned alpha = fromBits == 32 ? from[3] : 0; // as if it had been copied to 32 bits first
    const unsigned weight = 255 - (blend.AlphaFormat != 0 ? alpha : 255) * scale / 255;
    for (unsigned channel = 0; channel < toBits / 8U; ++channel) {
        const unsigned source = channel < 3 ? from[channel] : alpha;
        to[channel] = static_cast<std::uint8_t>(std::min((to[channel] * weight + source * scale) / 255, 255U));
    }
}

} // namespace

RegionKind GetClipBox(Handle dc, Rect& box) noexcept {
    box = {};
    if (!findDC(dc) || faultDue(SeamCall::getClipBox)) return RegionKind::error;
    const Surface surface(dc);
    box.right = static_cast<std::int32_t>(surface.width());
    box.bottom = static_cast<std::int32_t>(surface.height());
    return surface.bitmap() != nullptr ? RegionKind::simple : RegionKind::empty;
}

bool BitBlt(Handle dc, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height, Handle source,
            std::int32_t sourceX, std::int32_t sourceY, std::uint32_t rasterOperation) noexcept {
    if (!findDC(dc) || !findDC(source) || rasterOperation != rasterCopy || faultDue(SeamCall::bitBlt)) return false;
    const Surface to(dc);
    const Surface from(source);
    Span columns{x, sourceX, width};
    Span rows{y, sourceY, height};
    columns.cut(to.width(), from.width());
    rows.cut(to.height(), from.height());
    if (to.bits() == 8 && from.bits() != 8) return false; // colours are not looked up
    if (columns.count <= 0) return true;
    for (Edge i = 0; i < rows.count; ++i) {
        // Within one bitmap a row must be read before it is written over.
        const Edge row = rows.to > rows.from ? rows.count - 1 - i : i;
        convertRow(*from.bitmap(), from.pixel(columns.from, rows.from + row), to.pixel(columns.to, rows.to + row),
                   to.bits(), static_cast<std::size_t>(columns.count));
    }
    return true;
}

int SetDIBitsToDevice(Handle dc, std::int32_t x, std::int32_t y, std::uint32_t width, std::uint32_t height,
                      std::int32_t sourceX, std::int32_t sourceY, std::uint32_t startScan, std::uint32_t lines,
                      const void* bits, const BitmapInfoHeader& header) noexcept {
    if (!findDC(dc) || bits == nullptr || !isSupported(header) || faultDue(SeamCall::setDIBitsToDevice)) return 0;
    const Surface to(dc);
    if (to.bits() == 8) return 0;
    const auto dibHeight = static_cast<Edge>(rowsOf(header));
    // What lies beside the target is taken all the same; what lies beside the DIB is not there.
    if (!meet(sourceX, width, 0, header.biWidth) || !meet(sourceY, height, 0, dibHeight)) return 0;
    const auto stride =
        static_cast<std::size_t>(paddedRowBytes(static_cast<std::uint64_t>(header.biWidth), header.biBitCount));
    // From here on rows count from the top, in the DIB too.
    Span columns{x, sourceX, width};
    Span rows{y, dibHeight - sourceY - Edge{height}, height};
    columns.cut(to.width(), header.biWidth);
    rows.cut(to.height(), dibHeight);
    for (Edge row = 0; columns.count > 0 && row < rows.count; ++row) {
        const Edge fromTop = rows.from + row;
        const Edge line = (header.biHeight < 0 ? fromTop : dibHeight - 1 - fromTop) - startScan;
        if (line < 0 || line >= lines) continue;
        const std::uint8_t* const from = static_cast<const std::uint8_t*>(bits) +
                                         static_cast<std::size_t>(line) * stride +
                                         static_cast<std::size_t>(columns.from) * (header.biBitCount / 8U);
        convertRow(header.biBitCount, nullptr, from, to.pixel(columns.to, rows.to + row), to.bits(),
                   static_cast<std::size_t>(columns.count));
    }
    return static_cast<int>(std::min<Edge>(lines, std::max<Edge>(dibHeight - startScan, 0)));
}

StretchMode SetStretchBltMode(Handle dc, StretchMode mode) noexcept {
    const ObjectRef context = findDC(dc);
    if (!context || mode < StretchMode::blackOnWhite || mode > StretchMode::halftone) return StretchMode::none;
    return std::exchange(context->stretchMode, mode);
}

bool AlphaBlend(Handle dc, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height, Handle source,
                std::int32_t sourceX, std::int32_t sourceY, std::int32_t sourceWidth, std::int32_t sourceHeight,
                BlendFunction blend) noexcept {
    if (!findDC(dc) || !findDC(source) || faultDue(SeamCall::alphaBlend)) return false;
    if (width < 0 || height < 0 || sourceX < 0 || sourceY < 0 || sourceWidth < 0 || sourceHeight < 0) return false;
    const Surface to(dc);
    const Surface from(source);
    if (to.bits() == 8 || from.bits() == 8) return false; // palettes are not blended
    if (blend.AlphaFormat != 0 && from.bits() != 32) return false;
    if (Edge{sourceX} + sourceWidth > from.width() || Edge{sourceY} + sourceHeight > from.height()) return false;
    if (from.bitmap() == to.bitmap() && meet(x, width, sourceX, sourceWidth) && meet(y, height, sourceY, sourceHeight))
        return false;
    Span columns{x, 0, width};
    Span rows{y, 0, height};
    columns.cut(to.width(), width);
    rows.cut(to.height(), height);
    if (sourceWidth == 0 || sourceHeight == 0) return true;
    const double xRatio = static_cast<double>(sourceWidth) / width;
    const double yRatio = static_cast<double>(sourceHeight) / height;
    for (Edge row = 0; row < rows.count; ++row) {
        // Rows are found from the lower edge, in which order bitmaps hold them.
        const Edge fromBottom = Edge{height} - 1 - (rows.from + row);
        const Edge sourceRow =
            Edge{sourceY} + sourceHeight - 1 - static_cast<Edge>(static_cast<double>(fromBottom) * yRatio);
        for (Edge column = 0; column < columns.count; ++column) {
            const Edge sourceColumn = static_cast<Edge>(static_cast<double>(columns.from + column) * xRatio + sourceX);
            blendPixel(to.pixel(columns.to + column, rows.to + row), to.bits(), from.pixel(sourceColumn, sourceRow),
                       from.bits(), blend);
        }
    }
    return true;
}

// Nothing is ever put off.
void GdiFlush() noexcept {
    faultDue(SeamCall::gdiFlush);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
