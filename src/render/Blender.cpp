#include "render/Blender.h"
#include "kernels/kernels.h"
#include "platform/gdi.h"
#include "render/PixelBuffer.h"
#include "render/PixelWorkers.h"
#include "shared/modParsers.h"
#include "surface/HostAccess.h"
#include <array>
#include <cstring>
#include <functional>

namespace pixkit {

namespace {

// Draws runs of pixels with what is decided once for a whole picture: opacity, gray, lightness.
class RunBlender {
  public:
    RunBlender(std::int32_t GlobalAlpha, std::int32_t grayScale, float lightAdj)
        : m_globalAlpha(static_cast<std::uint8_t>(GlobalAlpha)) {
        if (lightAdj != 0.0F) m_tone = spt_LightnessTone(lightAdj);
        m_tone.isGray = grayScale != gsclNone;
        if (m_tone.isGray) m_tone.weights = iparseGrayScaleRatios(grayScale);
    }

    void onto32(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) const {
        if (m_tone.isLight || m_tone.isGray)
            kernels::table().blendToned(dst, src, count, m_globalAlpha, m_tone);
        else if (m_globalAlpha == 255)
            kernels::table().blendOver(dst, src, count);
        else
            kernels::table().blendScaled(dst, src, count, m_globalAlpha);
    }

    void onto24(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) const {
        constexpr std::size_t piecePixels = 512; // stay in the first-level cache
        std::array<std::uint8_t, 4 * piecePixels> wide;
        for (std::size_t done = 0; done < count; done += piecePixels) {
            const std::size_t piece = std::min(piecePixels, count - done);
            kernels::table().unpack24(wide.data(), dst + 3 * done, piece, false);
            onto32(wide.data(), src + 4 * done, piece);
            kernels::table().pack24(dst + 3 * done, wide.data(), piece, false);
        }
    }

  private:
    std::uint8_t m_globalAlpha;
    kernels::Tone m_tone;
};

// The part of a view that starts at left and, counted from its top, at top; all of it lies within.
template <class Byte>
BasicPixelView<Byte> partOf(BasicPixelView<Byte> view, std::int64_t left, std::int64_t top, const PixelRect& size) {
    const auto width = static_cast<std::size_t>(size.width());
    const auto height = static_cast<std::size_t>(size.height());
    const std::size_t lowest = view.height - static_cast<std::size_t>(top) - height;
    return {view.row(lowest) + 4 * left, width, height, view.stride};
}

template <class A, class B>
bool overlap(BasicPixelView<A> a, BasicPixelView<B> b) {
    const std::less<const std::uint8_t*> before;
    return before(a.bits, b.bits + b.stride * b.height) && before(b.bits, a.bits + a.stride * a.height);
}

// Rows are taken in the order of memory: the other way round its prefetching would not keep up.
void blendOntoPixels(PixelView host, ConstPixelView source, const RunBlender& blender) {
    PixelBuffer before;
    if (overlap(host, source)) { // an image drawn onto itself is read as it was before
        before = PixelBuffer(source.width, source.height);
        for (std::size_t y = 0; y < source.height; ++y)
            std::memcpy(before.view().row(y), source.row(y), 4 * source.width);
        source = before.view();
    }
    if (host.stride == 4 * host.width && source.stride == host.stride) {
        blender.onto32(host.bits, source.bits, host.width * host.height);
        return;
    }
    for (std::size_t y = 0; y < host.height; ++y)
        blender.onto32(host.row(y), source.row(y), host.width);
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
    std::uint8_t* row(std::size_t memoryRow) const {
        return m_bits + memoryRow * static_cast<std::size_t>(iparseByteAlignOnWord(24, m_header.biWidth));
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

bool blendOntoDC(platform::Handle destinationDC, const PixelRect& destination, ConstPixelView source,
                 const RunBlender& blender) {
    const Copy24 copy(destinationDC, destination);
    if (!copy) return false;
    for (std::size_t y = 0; y < source.height; ++y)
        blender.onto24(copy.row(y), source.row(y), source.width);
    return copy.writeBack(destinationDC, destination);
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

    source = partOf(source, destination.left - shiftX, destination.top - shiftY, destination);
    const RunBlender blender(GlobalAlpha, grayScale, lightAdj);
    platform::GdiFlush();
    if (tHost == nullptr) return blendOntoDC(destinationDC, destination, source, blender);
    blendOntoPixels(partOf(HostAccess::pixels(*tHost), destination.left, destination.top, destination), source,
                    blender);
    return true;
}

} // namespace pixkit
