#include "render/Resampler.h"
#include "kernels/kernels.h"
#include "render/Bilinear.h"
#include "render/ResampledAxis.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace pixkit {

namespace {

void resampleNearest(PixelView output, ConstPixelView source, const ResampledAxis& columns, const ResampledAxis& rows) {
    std::vector<std::int32_t> xLUdbl(columns.count); // where in a row each column's pixel is, in bytes
    for (std::size_t i = 0; i < columns.count; ++i) {
        const double position = columns.scaled(i) + static_cast<double>(columns.sourceStart);
        xLUdbl[i] = static_cast<std::int32_t>(columns.pixelAt(position) * 4);
    }
    const std::uint8_t* before = nullptr;
    for (std::size_t i = 0; i < rows.count; ++i) {
        const double position = std::floor(rows.scaled(i)) + static_cast<double>(rows.sourceStart);
        const std::uint8_t* const row = source.row(rows.pixelAt(position));
        if (row == before) {
            std::memcpy(output.row(i), output.row(i - 1), output.width * 4);
        } else {
            kernels::table().gatherPixels(output.row(i), row, xLUdbl.data(), columns.count);
        }
        before = row;
    }
}

// So many columns are worked out from top to bottom before the next: what is held of each, on both sides up to a
// hundred bytes, stays in the cache, and takes no memory to speak of however wide a picture is.
constexpr std::size_t columnsAtOnce = 8192;

void resample(PixelView output, ConstPixelView source, const ResampledAxis& columns, const ResampledAxis& rows,
              bool HighQuality) {
    for (std::size_t done = 0; done < columns.count; done += columnsAtOnce) {
        const std::size_t count = std::min(columnsAtOnce, columns.count - done);
        const PixelView piece{output.bits + done * 4, count, output.height, output.stride};
        const ResampledAxis part = {columns.sourceStart, columns.sourceSize, columns.scaledSize, columns.start + done,
                                    count};
        (HighQuality ? resampleBilinear : resampleNearest)(piece, source, part, rows);
    }
}

std::size_t size(std::int64_t value) {
    return static_cast<std::size_t>(value);
}

} // namespace

void spt_pvResize(DrawJob& job, PixelBuffer& rSizedBytes) {
    const Rect& from = job.source;
    const Rect& to = job.destination;
    const Rect visible = job.visible();
    const ResampledAxis columns = {size(from.left), size(from.width()), size(to.width()), size(visible.left - to.left),
                                   size(visible.width())};
    const ResampledAxis rows = {job.image.height - size(from.bottom), size(from.height()), size(to.height()),
                                size(to.bottom - visible.bottom), size(visible.height())};
    rSizedBytes = PixelBuffer(columns.count, rows.count);
    resample(rSizedBytes.view(), job.image, columns, rows, job.HighQuality);
    job.drawFrom(rSizedBytes.view(), visible);
}

void spt_pvResize(PixelView rSizedBytes, ConstPixelView source, bool HighQuality) {
    const ResampledAxis columns = {0, source.width, rSizedBytes.width, 0, rSizedBytes.width};
    const ResampledAxis rows = {0, source.height, rSizedBytes.height, 0, rSizedBytes.height};
    resample(rSizedBytes, source, columns, rows, HighQuality);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
