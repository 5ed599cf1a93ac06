// A picture repeated over a rectangle.
#include "gdiplus/cGDIPlus.h"
#include "platform/gdi.h"
#include "render/Blender.h"
#include "render/GdiplusPath.h"
#include "render/HostRelease.h"
#include "render/PixelBuffer.h"
#include "surface/attempt.h"
#include <algorithm>
#include <cstring>
#include <utility>

namespace pixkit {

namespace {

std::int64_t wrapped(std::int64_t position, std::int64_t period) {
    const std::int64_t rest = position % period;
    return rest < 0 ? rest + period : rest;
}

// The endless plane of tiles, with a gap of nothing to the right of each and below.
class TiledPlane {
  public:
    TiledPlane(ConstPixelView tile, std::int64_t gap)
        : m_tile(tile), m_width(static_cast<std::int64_t>(tile.width)),
          m_height(static_cast<std::int64_t>(tile.height)), m_periodX(m_width + gap), m_periodY(m_height + gap) {}

    std::int64_t rowsToRepeat() const noexcept { return m_periodY; }

    // Fills `part` with what lies from column x and row y of the plane on; a tile begins at 0, 0.
    void copyTo(PixelView part, std::int64_t x, std::int64_t y) const {
        for (std::size_t row = 0; row < part.height; ++row) {
            std::uint8_t* const target = part.rowFromTop(row);
            const std::int64_t tileRow = wrapped(y + static_cast<std::int64_t>(row), m_periodY);
            if (tileRow >= m_height) {
                std::memset(target, 0, part.width * 4);
            } else if (static_cast<std::int64_t>(row) >= m_periodY) {
                std::memcpy(target, part.rowFromTop(row - static_cast<std::size_t>(m_periodY)), part.width * 4);
            } else {
                copyRow(target, static_cast<std::int64_t>(part.width),
                        m_tile.rowFromTop(static_cast<std::size_t>(tileRow)), wrapped(x, m_periodX));
            }
        }
    }

  private:
    void copyRow(std::uint8_t* target, std::int64_t count, const std::uint8_t* tileRow, std::int64_t x) const {
        std::int64_t done = 0;
        while (done < std::min(count, m_periodX)) {
            const std::int64_t run = std::min((x < m_width ? m_width : m_periodX) - x, count - done);
            if (x < m_width)
                std::memcpy(target + 4 * done, tileRow + 4 * x, static_cast<std::size_t>(4 * run));
            else
                std::memset(target + 4 * done, 0, static_cast<std::size_t>(4 * run));
            done += run;
            x = wrapped(x + run, m_periodX);
        }
        // What is there is repeated, twice as much each time: narrow tiles cost no more than wide ones.
        while (done < count) {
            const std::int64_t from = done % m_periodX;
            const std::int64_t run = std::min(done - from, count - done);
            std::memcpy(target + 4 * done, target + 4 * from, static_cast<std::size_t>(4 * run));
            done += run;
        }
    }

    ConstPixelView m_tile;
    std::int64_t m_width, m_height, m_periodX, m_periodY;
};

// The rows of the plane that are laid out and drawn at once: as many as stay in the second-level cache, and where tiles
// are low, whole tiles, so that the same band serves from top to bottom.
std::int64_t bandRows(const Rect& area, std::int64_t rowsToRepeat) {
    constexpr std::int64_t bandPixels = 1 << 17;
    const std::int64_t rows = std::clamp<std::int64_t>(bandPixels / area.width(), 1, area.height());
    return rows > rowsToRepeat ? rows - rows % rowsToRepeat : rows;
}

// Where bands are laid out: for AlphaBlend in a bitmap, for all others in memory.
class Band {
  public:
    // With `bitmapAlpha` in a bitmap of that alpha, unless the system gives none.
    Band(std::int64_t width, std::int64_t rows, const AlphaTypeEnum* bitmapAlpha) {
        if (bitmapAlpha != nullptr &&
            m_bitmap.InitializeDIB(static_cast<std::int32_t>(width), static_cast<std::int32_t>(rows))) {
            m_bitmap.Alpha(*bitmapAlpha);
        } else {
            m_buffer = PixelBuffer(static_cast<std::size_t>(width), static_cast<std::size_t>(rows));
        }
    }
    bool isBitmap() const noexcept { return m_bitmap.Handle() != 0; }
    cPixSheet& bitmap() noexcept { return m_bitmap; }
    PixelView pixels() noexcept {
        platform::GdiFlush(); // the system may still be drawing from them
        return isBitmap() ? HostAccess::pixels(m_bitmap) : m_buffer.view();
    }

  private:
    cPixSheet m_bitmap;
    PixelBuffer m_buffer;
};

} // namespace

bool cPixSheet::TileImage(std::intptr_t destinationDC, std::int32_t destX, std::int32_t destY, std::int32_t destWidth,
                          std::int32_t destHeight, std::int32_t Opacity, std::int32_t offsetX, std::int32_t offsetY,
                          std::int32_t Gap, cPixSheet* destHostDIB) const noexcept {
    const Call call(*this, "TileImage",
                    "destinationDC, destX, destY, destWidth, destHeight, Opacity, offsetX, offsetY, Gap, destHostDIB",
                    destinationDC, destX, destY, destWidth, destHeight, Opacity, offsetX, offsetY, Gap, destHostDIB);
    return attempt(call, [&] {
        const ConstPixelView image = HostAccess::pixels(*this);
        if (!image) return refused(noImage);
        if (Opacity < 1) return done();
        if (destWidth < 1 || destHeight < 1) return refused("the rectangle has no width or no height");
        if (Gap < 0) return refused("the gap is negative");
        DrawJob job = {.image = image,
                       .source = image.rect(),
                       .destinationDC = destinationDC,
                       .destHostDIB = destHostDIB,
                       .destination = Rect::ofSize(destWidth, destHeight).moved(destX, destY),
                       .globalAlpha = globalAlphaOf(Opacity)};
        const HostRelease release(destHostDIB);
        if (Outcome limits = job.findLimits(); !limits) return limits;
        const Rect area = job.visible();
        if (area.isEmpty()) return done();

        PixelBuffer before; // an image tiled over itself is read as it was
        if (destHostDIB == this) {
            before = PixelBuffer(image.width, image.height);
            std::memcpy(before.view().bits, image.bits, image.stride * image.height);
        }
        const TiledPlane plane(before ? std::as_const(before).view() : image, Gap);
        std::int64_t rows = bandRows(area, plane.rowsToRepeat());
        // Nobody knows which bitmap a device context holds. Should it be this image, it must not be read again once it
        // is drawn on.
        if (destHostDIB == nullptr && rows % plane.rowsToRepeat() != 0) rows = area.height();
        job.drawFrom(image, image.rect()); // bands are drawn in the way of a single tile
        const AlphaTypeEnum alpha =
            state().m_AlphaImage == AlphaNone && Gap > 0 ? AlphaSimple : state().m_AlphaImage; // gaps are clear
        Band band(area.width(), rows, state().pvCanUseAlphaBlend(job) ? &alpha : nullptr);
        const auto cGDIp = HostAccess::GDIPlus(*this);
        const auto draw = [&] {
            if (band.isBitmap()) return band.bitmap().state().pvAlphaBlend(job);
            return cGDIp && spt_RenderGDIplus(job, *cGDIp) ? done() : spt_Win9xBlend(job);
        };
        for (std::int64_t y = area.top; y < area.bottom; y += rows) {
            if (y == area.top || rows % plane.rowsToRepeat() != 0)
                plane.copyTo(band.pixels(), area.left - destX - offsetX, y - destY - offsetY);
            const Rect drawn = {area.left, y, area.right, std::min(y + rows, area.bottom)};
            job.image = band.pixels();
            job.source = Rect::ofSize(drawn.width(), drawn.height());
            job.destination = drawn;
            if (Outcome isDrawn = draw(); !isDrawn) return isDrawn;
        }
        return done();
    });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
