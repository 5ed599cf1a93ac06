#include "render/Blender.h"
#include "kernels/kernels.h"
#include "platform/gdi.h"
#include "render/PixelWorkers.h"
#include "shared/modParsers.h"
#include "surface/HostAccess.h"
#include <array>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

namespace pixkit {

namespace {

constexpr std::size_t piecePixels = 512; // pieces of rows that stay in the first-level cache

// Draws runs of pixels with what is decided once for a whole picture: opacity, gray, lightness.
class RunBlender {
  public:
    RunBlender(std::int32_t GlobalAlpha, std::int32_t grayScale, float lightAdj)
        : m_globalAlpha(static_cast<std::uint8_t>(GlobalAlpha)), m_isGray(grayScale != gsclNone),
          m_isLight(lightAdj != 0.0F) {
        if (m_isGray) m_weights = iparseGrayScaleRatios(grayScale);
        if (m_isLight) m_lightness = LightnessTable(lightAdj);
    }

    void onto32(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) const {
        if (!m_isGray && !m_isLight) {
            blend(dst, src, count);
            return;
        }
        std::array<std::uint8_t, 4 * piecePixels> adjusted;
        for (std::size_t done = 0; done < count; done += piecePixels) {
            const std::size_t piece = std::min(piecePixels, count - done);
            adjust(adjusted.data(), src + 4 * done, piece);
            blend(dst + 4 * done, adjusted.data(), piece);
        }
    }

    void onto24(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) const {
        std::array<std::uint8_t, 4 * piecePixels> wide;
        for (std::size_t done = 0; done < count; done += piecePixels) {
            const std::size_t piece = std::min(piecePixels, count - done);
            kernels::table().unpack24(wide.data(), dst + 3 * done, piece, false);
            onto32(wide.data(), src + 4 * done, piece);
            kernels::table().pack24(dst + 3 * done, wide.data(), piece, false);
        }
    }

  private:
    void blend(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) const {
        if (m_globalAlpha == 255)
            kernels::table().blendOver(dst, src, count);
        else
            kernels::table().blendScaled(dst, src, count, m_globalAlpha);
    }

    void adjust(std::uint8_t* adjusted, const std::uint8_t* src, std::size_t count) const {
        if (m_isLight)
            m_lightness.apply(adjusted, src, count);
        else
            std::memcpy(adjusted, src, 4 * count);
        if (m_isGray) kernels::table().grayscale(adjusted, count, m_weights);
    }

    std::uint8_t m_globalAlpha;
    bool m_isGray;
    bool m_isLight;
    kernels::GrayWeights m_weights{};
    LightnessTable m_lightness;
};

struct Placed {
    PixelRect destination;   // not empty, within the destination
    std::int64_t SrcX, SrcY; // where it starts in the source, within which it lies
};

const std::uint8_t* sourceRow(ConstPixelView source, const Placed& placed, std::int64_t row) {
    return source.rowFromTop(static_cast<std::size_t>(placed.SrcY + row)) + 4 * placed.SrcX;
}

bool overlaps(ConstPixelView a, ConstPixelView b) {
    const std::less<const std::uint8_t*> before;
    return before(a.bits, b.bits + b.stride * b.height) && before(b.bits, a.bits + a.stride * a.height);
}

void blendOntoHost(PixelView host, ConstPixelView source, const Placed& placed, const RunBlender& blender) {
    const auto width = static_cast<std::size_t>(placed.destination.width());
    const bool isItself = overlaps(host, source);
    // An image drawn onto itself is read as it was before.
    std::vector<std::uint8_t> before;
    if (isItself) {
        for (std::int64_t row = 0; row < placed.destination.height(); ++row) {
            const std::uint8_t* const from = sourceRow(source, placed, row);
            before.insert(before.end(), from, from + 4 * width);
        }
    }
    for (std::int64_t row = 0; row < placed.destination.height(); ++row) {
        std::uint8_t* const dst =
            host.rowFromTop(static_cast<std::size_t>(placed.destination.top + row)) + 4 * placed.destination.left;
        const auto index = static_cast<std::size_t>(row);
        blender.onto32(dst, isItself ? before.data() + index * 4 * width : sourceRow(source, placed, row), width);
    }
}

// The pixels of a part of a device context as a 24-bit copy, in a memory device context of its own.
class Copy24 {
  public:
    Copy24(platform::Handle destinationDC, const PixelRect& part) {
        m_header.biWidth = static_cast<std::int32_t>(part.width());
        m_header.biHeight = static_cast<std::int32_t>(part.height());
        m_header.biBitCount = 24;
        const platform::ScreenDC screen;
        void* bits = nullptr;
        m_bitmap = Bitmap(platform::CreateDIBSection(screen.get(), m_header, &bits));
        m_dc = MemoryDC(platform::CreateCompatibleDC(screen.get()));
        if (!m_bitmap || !m_dc) return;
        const platform::Handle before = platform::SelectObject(m_dc.get(), m_bitmap.get());
        if (before == 0) return;
        const bool wasRead = platform::BitBlt(m_dc.get(), 0, 0, m_header.biWidth, m_header.biHeight, destinationDC,
                                              static_cast<std::int32_t>(part.left), static_cast<std::int32_t>(part.top),
                                              platform::rasterCopy);
        platform::GdiFlush();
        platform::SelectObject(m_dc.get(), before);
        if (wasRead) m_bits = static_cast<std::uint8_t*>(bits);
    }

    // Whether there is a copy.
    explicit operator bool() const noexcept { return m_bits != nullptr; }
    std::uint8_t* rowFromTop(std::int64_t y) const {
        const auto stride = static_cast<std::size_t>(iparseByteAlignOnWord(24, m_header.biWidth));
        return m_bits + static_cast<std::size_t>(m_header.biHeight - 1 - y) * stride;
    }
    bool writeBack(platform::Handle destinationDC, const PixelRect& part) const noexcept {
        const auto rows = static_cast<std::uint32_t>(m_header.biHeight);
        return platform::SetDIBitsToDevice(
                   destinationDC, static_cast<std::int32_t>(part.left), static_cast<std::int32_t>(part.top),
                   static_cast<std::uint32_t>(m_header.biWidth), rows, 0, 0, 0, rows, m_bits, m_header) != 0;
    }

  private:
    using Bitmap = platform::UniqueHandle<&platform::DeleteObject>;
    using MemoryDC = platform::UniqueHandle<&platform::DeleteDC>;

    platform::BitmapInfoHeader m_header;
    Bitmap m_bitmap;
    MemoryDC m_dc;
    std::uint8_t* m_bits = nullptr;
};

bool blendOntoDC(platform::Handle destinationDC, ConstPixelView source, const Placed& placed,
                 const RunBlender& blender) {
    const Copy24 copy(destinationDC, placed.destination);
    if (!copy) return false;
    for (std::int64_t row = 0; row < placed.destination.height(); ++row) {
        blender.onto24(copy.rowFromTop(row), sourceRow(source, placed, row),
                       static_cast<std::size_t>(placed.destination.width()));
    }
    return copy.writeBack(destinationDC, placed.destination);
}

} // namespace

std::optional<PixelRect> spt_DestinationLimits(platform::Handle destinationDC, const cPixSheet* tHost) noexcept {
    if (tHost != nullptr) {
        if (tHost->Handle() == 0) return {};
        return PixelRect{0, 0, tHost->Width(), tHost->Height()};
    }
    platform::Rect box;
    switch (platform::GetClipBox(destinationDC, box)) {
    case platform::ClipBox::error:
        return {};
    case platform::ClipBox::empty:
        return PixelRect{};
    default:
        // Under mapping modes in which y grows upwards, or x to the left, the system gives the edges the other way
        // round.
        return PixelRect{std::min(box.left, box.right), std::min(box.top, box.bottom), std::max(box.left, box.right),
                         std::max(box.top, box.bottom)};
    }
}

bool spt_Win9xBlend(platform::Handle destinationDC, ConstPixelView source, std::int32_t SrcX, std::int32_t SrcY,
                    std::int32_t destX, std::int32_t destY, std::int32_t destWidth, std::int32_t destHeight,
                    std::int32_t GlobalAlpha, cPixSheet* tHost, std::int32_t grayScale, float lightAdj) {
    const auto limits = spt_DestinationLimits(destinationDC, tHost);
    if (!source || !limits) return false;
    const std::int64_t shiftX = std::int64_t{destX} - SrcX;
    const std::int64_t shiftY = std::int64_t{destY} - SrcY;
    const PixelRect wanted{destX, destY, std::int64_t{destX} + destWidth, std::int64_t{destY} + destHeight};
    const PixelRect there =
        PixelRect{0, 0, static_cast<std::int64_t>(source.width), static_cast<std::int64_t>(source.height)}.moved(
            shiftX, shiftY);
    const PixelRect destination = wanted.cut(*limits).cut(there);
    if (destination.isEmpty()) return true;

    const Placed placed{destination, destination.left - shiftX, destination.top - shiftY};
    const RunBlender blender(GlobalAlpha, grayScale, lightAdj);
    platform::GdiFlush();
    if (tHost == nullptr) return blendOntoDC(destinationDC, source, placed, blender);
    blendOntoHost(HostAccess::pixels(*tHost), source, placed, blender);
    return true;
}

} // namespace pixkit
