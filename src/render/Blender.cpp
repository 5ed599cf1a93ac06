#include "render/Blender.h"
#include "kernels/kernels.h"
#include "platform/gdi.h"
#include "render/PixelBuffer.h"
#include "render/PixelWorkers.h"
#include "shared/Colors.h"
#include "shared/checked.h"
#include "surface/HostAccess.h"
#include <array>
#include <cstring>

namespace pixkit {

namespace {

// Draws runs of pixels with what is decided once for a whole picture: opacity, gray, lightness.
class RunBlender {
  public:
    explicit RunBlender(const DrawJob& job) : m_globalAlpha(job.globalAlpha) {
        if (job.LightAdjustment != 0.0F) m_tone = spt_LightnessTone(job.LightAdjustment);
        m_tone.isGray = job.grayScale != gsclNone;
        if (m_tone.isGray) m_tone.weights = iparseGrayScaleRatios(job.grayScale);
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

// Rows are taken in the order of memory: the other way round its prefetching would not keep up.
void blendOntoPixels(PixelView host, ConstPixelView source, const RunBlender& blender) {
    PixelBuffer before;
    if (overlap(host.bytes(), source.bytes())) { // an image drawn onto itself is read as it was before
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
    Copy24(platform::Handle destinationDC, const Rect& part) {
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
    bool writeBack(platform::Handle destinationDC, const Rect& part) const noexcept {
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

Outcome blendOntoDC(platform::Handle destinationDC, const Rect& destination, ConstPixelView source,
                    const RunBlender& blender) {
    const Copy24 copy(destinationDC, destination);
    if (!copy) return refused("the device context cannot be read");
    for (std::size_t y = 0; y < source.height; ++y)
        blender.onto24(copy.row(y), source.row(y), source.width);
    return doneIf(copy.writeBack(destinationDC, destination), "the system cannot draw on the device context");
}

} // namespace

Outcome spt_Win9xBlend(const DrawJob& job) {
    const Rect destination = job.visible();
    if (destination.isEmpty()) return done();
    const ConstPixelView source =
        job.image.part(destination.moved(job.source.left - job.destination.left, job.source.top - job.destination.top));
    const RunBlender blender(job);
    if (job.destHostDIB == nullptr) return blendOntoDC(job.destinationDC, destination, source, blender);
    blendOntoPixels(HostAccess::pixels(*job.destHostDIB).part(destination), source, blender);
    return done();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
