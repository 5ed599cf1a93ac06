#include "render/Rotator.h"
#include "kernels/kernels.h"
#include "render/Blender.h"
#include "render/PixelBuffer.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace pixkit {

namespace {

constexpr double fixedOne = 4294967296.0; // positions have 32 bits behind the point
constexpr std::int64_t onePixel = std::int64_t{1} << 32;

std::int64_t toFixed(double value) {
    return static_cast<std::int64_t>(std::floor(value * fixedOne));
}

struct Turn {
    double cosine, sine;
    bool isOddQuarter; // 90 or 270 degrees and nothing else
};

// Worked out here, with nothing but sums and products, because system libraries differ in the last bit. The series end
// where they no longer count for up to 45 degrees; multiples of 90 come out exactly.
Turn turnOf(float Angle) {
    const double degrees = std::fmod(static_cast<double>(Angle), 360.0); // without loss
    const double quarters = std::floor(degrees / 90.0 + 0.5);
    constexpr double pi = 3.14159265358979323846; // 4 * arctan(1)
    const double x = (degrees - 90.0 * quarters) * (pi / 180.0);
    double sine = 1.0;
    double cosine = 1.0;
    for (int n = 18; n >= 2; n -= 2) {
        cosine = 1.0 - x * x / (n * (n - 1)) * cosine;
        sine = 1.0 - x * x / (n * (n + 1)) * sine;
    }
    sine *= x;
    switch (static_cast<int>(quarters) & 3) {
    case 0:
        return {cosine, sine, false};
    case 1:
        return {-sine, cosine, x == 0.0};
    case 2:
        return {-cosine, -sine, false};
    default:
        return {sine, -cosine, x == 0.0};
    }
}

// First and end of the columns, counted from 0, in which a position that starts at `start` may lie in low .. high; one
// more on either side makes up for rounding.
struct Range {
    std::int64_t begin, end;
};
Range columnsWithin(double start, double perColumn, double low, double high, std::int64_t count) {
    if (perColumn == 0.0) return {0, start >= low && start <= high ? count : 0};
    double first = (low - start) / perColumn;
    double last = (high - start) / perColumn;
    if (first > last) std::swap(first, last);
    const auto limit = static_cast<double>(count);
    return {static_cast<std::int64_t>(std::clamp(std::floor(first) - 1.0, 0.0, limit)),
            static_cast<std::int64_t>(std::clamp(std::ceil(last) + 2.0, 0.0, limit))};
}

} // namespace

Rotator::Rotator(const DrawJob& job) : m_source(job.image.part(job.source)), m_isInterpolating(job.HighQuality) {
    const Turn turn = turnOf(job.Angle);
    const auto width = static_cast<double>(job.destination.width());
    const auto height = static_cast<double>(job.destination.height());
    const auto srcWidth = static_cast<double>(m_source.width);
    const auto srcHeight = static_cast<double>(m_source.height);
    const double half = turn.isOddQuarter && std::fmod(width + height, 2.0) != 0.0 ? 0.5 : 0.0;
    m_centreX = static_cast<double>(job.destination.left) + width / 2 - half;
    m_centreY = static_cast<double>(job.destination.top) + height / 2 - half;

    // From the destination back to the source: the rotation is undone, then the scale. A mirrored axis runs the other
    // way round. Stored rows run upwards, so that the vertical axis is reversed unless it is mirrored. Interpolation
    // counts from pixel centres.
    const double columns = (job.mirrorsColumns ? -srcWidth : srcWidth) / width;
    const double rows = (job.mirrorsRows ? srcHeight : -srcHeight) / height;
    const double corner = m_isInterpolating ? 0.5 : 0.0;
    m_u = {srcWidth / 2.0 - corner, turn.cosine * columns, turn.sine * columns};
    m_v = {srcHeight / 2.0 - corner, -turn.sine * rows, turn.cosine * rows};

    // On each side half a source pixel more, because edges fade there, and one destination pixel more for rounding.
    const double reachX = width / 2 * (1 + 1.0 / srcWidth);
    const double reachY = height / 2 * (1 + 1.0 / srcHeight);
    const double aside = std::abs(turn.cosine) * reachX + std::abs(turn.sine) * reachY + 1;
    const double up = std::abs(turn.sine) * reachX + std::abs(turn.cosine) * reachY + 1;
    m_bounds = {
        static_cast<std::int64_t>(std::floor(m_centreX - aside)), static_cast<std::int64_t>(std::floor(m_centreY - up)),
        static_cast<std::int64_t>(std::ceil(m_centreX + aside)), static_cast<std::int64_t>(std::ceil(m_centreY + up))};
}

// The columns of a row, counted from its left end, that the source reaches, and the walk through the source that starts
// at the first of them. Positions wrap around outside of the span, where nobody looks at them.
struct Rotator::Span {
    std::int64_t begin, end;
    std::uint64_t u, v, du, dv;

    std::int64_t uAt(std::int64_t column) const noexcept {
        return static_cast<std::int64_t>(u + static_cast<std::uint64_t>(column - begin) * du);
    }
    std::int64_t vAt(std::int64_t column) const noexcept {
        return static_cast<std::int64_t>(v + static_cast<std::uint64_t>(column - begin) * dv);
    }
    void skipTo(std::int64_t column) noexcept {
        u = static_cast<std::uint64_t>(uAt(column));
        v = static_cast<std::uint64_t>(vAt(column));
        begin = column;
    }
};

// Whether any source pixel has a part in what is drawn at this position.
bool Rotator::isReached(std::int64_t u, std::int64_t v) const noexcept {
    const std::int64_t least = m_isInterpolating ? -onePixel : 0;
    return u >= least && v >= least && u >> 32 < static_cast<std::int64_t>(m_source.width) &&
           v >> 32 < static_cast<std::int64_t>(m_source.height);
}

// Whether all source pixels that sampling at this position reads are there, also those whose weight is 0.
bool Rotator::isInside(std::int64_t u, std::int64_t v) const noexcept {
    const std::int64_t further = m_isInterpolating ? 1 : 0;
    return u >= 0 && v >= 0 && (u >> 32) + further < static_cast<std::int64_t>(m_source.width) &&
           (v >> 32) + further < static_cast<std::int64_t>(m_source.height);
}

Rotator::Span Rotator::spanOf(std::int64_t y, std::int64_t left, std::int64_t right) const {
    const double dx = static_cast<double>(left) + 0.5 - m_centreX;
    const double dy = static_cast<double>(y) + 0.5 - m_centreY;
    const double u = m_u.at(dx, dy);
    const double v = m_v.at(dx, dy);
    const double low = m_isInterpolating ? -1.0 : 0.0;
    const Range columns = columnsWithin(u, m_u.perColumn, low, static_cast<double>(m_source.width), right - left);
    const Range rows = columnsWithin(v, m_v.perColumn, low, static_cast<double>(m_source.height), right - left);
    Span span{std::max(columns.begin, rows.begin), std::min(columns.end, rows.end), 0, 0, 0, 0};
    if (span.begin >= span.end) return {0, 0, 0, 0, 0, 0};

    const double ahead = dx + static_cast<double>(span.begin);
    span.u = static_cast<std::uint64_t>(toFixed(m_u.at(ahead, dy)));
    span.v = static_cast<std::uint64_t>(toFixed(m_v.at(ahead, dy)));
    span.du = static_cast<std::uint64_t>(toFixed(m_u.perColumn));
    span.dv = static_cast<std::uint64_t>(toFixed(m_v.perColumn));
    // From here on the fixed positions alone decide. They rise or fall steadily: what holds at both ends holds between.
    std::int64_t first = span.begin;
    while (first < span.end && !isReached(span.uAt(first), span.vAt(first)))
        ++first;
    while (span.end > first && !isReached(span.uAt(span.end - 1), span.vAt(span.end - 1)))
        --span.end;
    span.skipTo(first);
    return span;
}

// A pixel at the edge, where some of the source pixels around the position are missing.
void Rotator::samplePixel(std::uint8_t* pixel, std::int64_t u, std::int64_t v) const {
    std::uint8_t around[2][8] = {};
    for (std::int64_t up = 0; up < 2; ++up) {
        for (std::int64_t aside = 0; aside < 2; ++aside) {
            const std::int64_t column = (u >> 32) + aside;
            const std::int64_t row = (v >> 32) + up;
            if (column < 0 || row < 0 || column >= static_cast<std::int64_t>(m_source.width) ||
                row >= static_cast<std::int64_t>(m_source.height))
                continue;
            std::memcpy(around[up] + 4 * aside, m_source.row(static_cast<std::size_t>(row)) + 4 * column, 4);
        }
    }
    const kernels::PixelWalk walk = {around[0], 8, u & (onePixel - 1), v & (onePixel - 1), 0, 0};
    kernels::table().walkBilinear(pixel, walk, 1);
}

// Fills what of a row the picture does not reach, and where it fades. Returns what is left to be sampled: pixels whose
// surroundings are all there.
Rotator::Span Rotator::sampleEnds(std::uint8_t* row, std::int64_t y, const Rect& part) const {
    Span span = spanOf(y, part.left, part.right);
    const auto at = [row](std::int64_t column) { return row + 4 * column; };
    std::memset(row, 0, static_cast<std::size_t>(span.begin) * 4);
    std::memset(at(span.end), 0, static_cast<std::size_t>(part.width() - span.end) * 4);
    std::int64_t first = span.begin;
    for (; first < span.end && !isInside(span.uAt(first), span.vAt(first)); ++first)
        samplePixel(at(first), span.uAt(first), span.vAt(first));
    for (; span.end > first && !isInside(span.uAt(span.end - 1), span.vAt(span.end - 1)); --span.end)
        samplePixel(at(span.end - 1), span.uAt(span.end - 1), span.vAt(span.end - 1));
    span.skipTo(first);
    return span;
}

void Rotator::sample(PixelView pixels, const Rect& part) const {
    // A row of the result that crosses more rows of the source than the caches keep for the next one is walked in
    // tiles. Shorter rows are quicker as a whole, which was measured.
    constexpr double rowsKept = 1024;
    constexpr std::int64_t tileHeight = 32;
    const bool isInTiles = std::abs(m_v.perColumn) * static_cast<double>(part.width()) > rowsKept;
    const std::int64_t tileWidth = isInTiles ? 128 : part.width();
    const auto kernel = m_isInterpolating ? kernels::table().walkBilinear : kernels::table().walkNearest;
    for (std::int64_t top = part.top; top < part.bottom; top += tileHeight) {
        const auto rowAt = [&](std::int64_t y) { return pixels.rowFromTop(static_cast<std::size_t>(y - part.top)); };
        const std::int64_t height = std::min(tileHeight, part.bottom - top);
        Span spans[tileHeight];
        for (std::int64_t i = 0; i < height; ++i)
            spans[i] = sampleEnds(rowAt(top + i), top + i, part);
        for (std::int64_t left = 0; left < part.width(); left += tileWidth) {
            for (std::int64_t i = 0; i < height; ++i) {
                const Span& span = spans[i];
                const std::int64_t first = std::max(left, span.begin);
                const std::int64_t end = std::min(left + tileWidth, span.end);
                if (first >= end) continue;
                const kernels::PixelWalk walk = {m_source.bits,
                                                 m_source.stride,
                                                 span.uAt(first),
                                                 span.vAt(first),
                                                 static_cast<std::int64_t>(span.du),
                                                 static_cast<std::int64_t>(span.dv)};
                kernel(rowAt(top + i) + 4 * first, walk, static_cast<std::size_t>(end - first));
            }
        }
    }
}

Rect Rotator::covered(const Rect& part) const {
    std::int64_t left = part.right;
    std::int64_t right = part.left;
    for (std::int64_t y = part.top; y < part.bottom; ++y) {
        const Span span = spanOf(y, part.left, part.right);
        if (span.begin == span.end) continue;
        left = std::min(left, part.left + span.begin);
        right = std::max(right, part.left + span.end);
    }
    return {left, part.top, right, part.bottom};
}

Outcome spt_RotateImage(DrawJob& job) {
    if (Outcome limits = job.findLimits(); !limits) return limits;
    const Rotator rotator(job);
    const Rect visible = rotator.bounds().cut(job.limits);
    if (visible.isEmpty()) return done();

    // Onto a host in bands, which stay in the cache between being sampled and being blended. A device context is read
    // and written in one piece, and an image that is drawn onto itself has to be read as a whole before it changes.
    constexpr std::int64_t bandHeight = 32;
    const bool inBands = job.destHostDIB != nullptr &&
                         !overlap(job.image.bytes(), HostAccess::pixels(std::as_const(*job.destHostDIB)).bytes());
    const std::int64_t rows = inBands ? std::min(bandHeight, visible.height()) : visible.height();
    PixelBuffer buffer(static_cast<std::size_t>(visible.width()), static_cast<std::size_t>(rows));
    for (std::int64_t top = visible.top; top < visible.bottom; top += rows) {
        const Rect band = rotator.covered({visible.left, top, visible.right, std::min(top + rows, visible.bottom)});
        if (band.isEmpty()) continue;
        const auto width = static_cast<std::size_t>(band.width());
        const PixelView pixels = {buffer.view().bits, width, static_cast<std::size_t>(band.height()), width * 4};
        rotator.sample(pixels, band);
        job.drawFrom(pixels, band);
        if (Outcome blended = spt_Win9xBlend(job); !blended) return blended;
    }
    return done();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
