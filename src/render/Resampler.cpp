#include "render/Resampler.h"
#include "kernels/kernels.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace pixkit {

namespace {

// One axis of a picture that is scaled: `sourceSize` pixels from `sourceStart`, columns or stored rows, become
// `scaledSize`, of which `count` from `start` are computed.
struct Axis {
    std::size_t sourceStart, sourceSize, scaledSize, start, count;

    double ratio() const { return static_cast<double>(sourceSize) / static_cast<double>(scaledSize); }
    std::size_t last() const { return sourceStart + sourceSize - 1; }
    // The pixel that a position falls on. A position close below the end may have been rounded up to it.
    std::size_t pixelAt(double position) const { return std::min(static_cast<std::size_t>(position), last()); }
    double scaled(std::size_t i) const { return static_cast<double>(start + i) * ratio(); }
};

void resampleNearest(PixelView output, ConstPixelView source, const Axis& columns, const Axis& rows) {
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

// The weight of a pixel at a distance below 1. Callers do not simplify 1 - (1 - x) to x: in floating point the two may
// differ, and every build has to give the same bytes.
double scaler(double distance) {
    return 1.0 - std::abs(distance);
}

class BilinearColumns {
  public:
    BilinearColumns(const Axis& columns, std::size_t sourceWidth)
        : m_offsets(columns.count), m_near(columns.count), m_far(columns.count) {
        for (std::size_t i = 0; i < columns.count; ++i) {
            const double position = columns.scaled(i) + static_cast<double>(columns.sourceStart);
            const std::size_t iX = columns.pixelAt(position);
            if (iX < columns.last()) {
                const double fX = position - static_cast<double>(iX);
                set(i, iX, scaler(fX - 0.0), scaler(fX - 1.0));
            } else if (iX + 1 < sourceWidth || iX == 0) {
                set(i, iX, 1.0, 0.0); // the last column alone
            } else {
                set(i, iX - 1, 0.0, 1.0); // the same, without reaching behind the row
            }
        }
    }
    // The first source column in use, from which offsets count from now on.
    std::size_t takeFirst() {
        const std::int32_t first = m_offsets.front();
        for (std::int32_t& offset : m_offsets)
            offset -= first;
        return static_cast<std::size_t>(first) / 4;
    }
    const std::int32_t* offsets() const { return m_offsets.data(); }
    const double* nearWeights() const { return m_near.data(); }
    const double* farWeights() const { return m_far.data(); }

  private:
    void set(std::size_t i, std::size_t column, double near, double far) {
        m_offsets[i] = static_cast<std::int32_t>(column * 4);
        m_near[i] = near;
        m_far[i] = far;
    }

    std::vector<std::int32_t> m_offsets;
    std::vector<double> m_near, m_far;
};

kernels::WeightedRows bilinearRows(ConstPixelView source, const Axis& rows, std::size_t i) {
    const double position = rows.scaled(i) + static_cast<double>(rows.sourceStart);
    const std::size_t iY = rows.pixelAt(position);
    if (iY == 0) return {source.row(0), nullptr, 1.0, 0.0};
    // Row iY is weighed with the fraction and row iY - 1 with the rest, even where iY - 1 lies below the source
    // rectangle. Columns do the opposite, and so the picture sits one stored row higher; this is wanted, because
    // callers know their pictures that way.
    const double fY = 1.0 - (position - static_cast<double>(iY));
    const double upper = scaler(0.0 - fY);
    const double lower = scaler(1.0 - fY);
    if (upper == 0.0) return {source.row(iY - 1), nullptr, lower, 0.0};
    if (lower == 0.0) return {source.row(iY), nullptr, upper, 0.0};
    return {source.row(iY), source.row(iY - 1), upper, lower};
}

// Rows of one pixel become rows of two, because the kernel reads pairs.
class DoubledPixels {
  public:
    void replace(kernels::WeightedRows& rows) {
        duplicate(rows.first, m_first);
        if (rows.second != nullptr) duplicate(rows.second, m_second);
    }

  private:
    static void duplicate(const std::uint8_t*& row, std::uint8_t (&pair)[8]) {
        std::memcpy(pair, row, 4);
        std::memcpy(pair + 4, row, 4);
        row = pair;
    }
    std::uint8_t m_first[8] = {}, m_second[8] = {};
};

// The part of a row that is in use as numbers, made when a row is first asked for and kept for the output rows that
// follow. They mix neighbours, so that two are held.
class WideRows {
  public:
    // From the source column `begin` on.
    WideRows(ConstPixelView source, const Axis& columns, std::size_t begin)
        : m_source(source), m_begin(begin),
          m_end(std::min(columns.pixelAt(columns.scaled(columns.count - 1) + static_cast<double>(columns.sourceStart)) +
                             2,
                         source.width)) {
        // A row's last pixel has one behind it, whatever that holds: its weight is 0.
        for (std::vector<double>& numbers : m_numbers)
            numbers.resize((m_end - m_begin + 1) * 4);
    }
    kernels::WeightedWideRows widened(const kernels::WeightedRows& rows) {
        return {row(rows.first), rows.second == nullptr ? nullptr : row(rows.second), rows.firstWeight,
                rows.secondWeight};
    }

  private:
    const double* row(const std::uint8_t* bytes) {
        const std::size_t which = static_cast<std::size_t>(bytes - m_source.bits) / m_source.stride % 2;
        std::vector<double>& numbers = m_numbers[which];
        if (m_held[which] != bytes) kernels::table().widenPixels(numbers.data(), bytes + m_begin * 4, m_end - m_begin);
        m_held[which] = bytes;
        return numbers.data();
    }

    ConstPixelView m_source;
    std::size_t m_begin, m_end;
    std::vector<double> m_numbers[2];
    const std::uint8_t* m_held[2] = {nullptr, nullptr};
};

void resampleBilinear(PixelView output, ConstPixelView source, const Axis& columns, const Axis& rows) {
    BilinearColumns weights(columns, source.width);
    // Where pixels count for several others, each is made numbers once instead of every time. The bound was measured.
    if (columns.ratio() * std::min(rows.ratio(), 2.0) < 1.4) {
        WideRows wide(source, columns, weights.takeFirst());
        for (std::size_t i = 0; i < rows.count; ++i)
            kernels::table().sampleWidened(output.row(i), wide.widened(bilinearRows(source, rows, i)),
                                           weights.offsets(), weights.nearWeights(), weights.farWeights(),
                                           columns.count);
        return;
    }
    DoubledPixels doubled;
    for (std::size_t i = 0; i < rows.count; ++i) {
        kernels::WeightedRows weighted = bilinearRows(source, rows, i);
        if (source.width == 1) doubled.replace(weighted);
        kernels::table().sampleBilinear(output.row(i), weighted, weights.offsets(), weights.nearWeights(),
                                        weights.farWeights(), columns.count);
    }
}

// So many columns are worked out from top to bottom before the next: what is held of each, on both sides up to a
// hundred bytes, stays in the cache, and takes no memory to speak of however wide a picture is.
constexpr std::size_t columnsAtOnce = 8192;

void resample(PixelView output, ConstPixelView source, const Axis& columns, const Axis& rows, bool HighQuality) {
    for (std::size_t done = 0; done < columns.count; done += columnsAtOnce) {
        const std::size_t count = std::min(columnsAtOnce, columns.count - done);
        const PixelView piece{output.bits + done * 4, count, output.height, output.stride};
        const Axis part = {columns.sourceStart, columns.sourceSize, columns.scaledSize, columns.start + done, count};
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
    const Axis columns = {size(from.left), size(from.width()), size(to.width()), size(visible.left - to.left),
                          size(visible.width())};
    const Axis rows = {job.image.height - size(from.bottom), size(from.height()), size(to.height()),
                       size(to.bottom - visible.bottom), size(visible.height())};
    rSizedBytes = PixelBuffer(columns.count, rows.count);
    resample(rSizedBytes.view(), job.image, columns, rows, job.HighQuality);
    job.drawFrom(rSizedBytes.view(), visible);
}

void spt_pvResize(PixelView rSizedBytes, ConstPixelView source, bool HighQuality) {
    const Axis columns = {0, source.width, rSizedBytes.width, 0, rSizedBytes.width};
    const Axis rows = {0, source.height, rSizedBytes.height, 0, rSizedBytes.height};
    resample(rSizedBytes, source, columns, rows, HighQuality);
}

} // namespace pixkit
