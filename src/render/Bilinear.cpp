#include "render/Bilinear.h"
#include "kernels/kernels.h"
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace pixkit {

namespace {

// The weight of a pixel at a distance below 1. Callers do not simplify 1 - (1 - x) to x: in floating point the two may
// differ, and every build has to give the same bytes.
double scaler(double distance) {
    return 1.0 - std::abs(distance);
}

class BilinearColumns {
  public:
    BilinearColumns(const ResampledAxis& columns, std::size_t sourceWidth)
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

kernels::WeightedRows bilinearRows(ConstPixelView source, const ResampledAxis& rows, std::size_t i) {
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
    WideRows(ConstPixelView source, const ResampledAxis& columns, std::size_t begin)
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

void resampleGenerally(PixelView output, ConstPixelView source, const ResampledAxis& columns,
                       const ResampledAxis& rows) {
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

// How many sixteenths of a pixel a column or row is further on than the one before it; 0 where that is no whole number,
// or so large that a pattern of columns would not hold it. Where it is whole, positions and weights in double precision
// are exact, and so are products and sums of bytes with them: whole numbers give the same.
std::uint32_t sixteenthsPerStep(const ResampledAxis& axis) {
    const std::uint64_t all = std::uint64_t{16} * axis.sourceSize;
    const std::uint64_t step = all / axis.scaledSize;
    return all % axis.scaledSize == 0 && step <= 1024 ? static_cast<std::uint32_t>(step) : 0;
}

kernels::PairPattern pairPattern(std::uint32_t phase, std::uint32_t step) {
    kernels::PairPattern pattern = {};
    pattern.advance = step;
    for (std::uint32_t k = 0; k < 16; ++k) {
        const std::uint32_t position = phase + k * step;
        std::uint32_t& start = pattern.starts[k / 4];
        if (k % 4 == 0) start = position / 16;
        pattern.places[2 * k] = static_cast<std::uint8_t>(position / 16 - start);
        pattern.places[2 * k + 1] = static_cast<std::uint8_t>(position / 16 - start + 1);
        for (std::uint32_t channel = 0; channel < 4; ++channel) {
            pattern.weights[8 * k + 2 * channel] = static_cast<std::uint8_t>(16 - position % 16);
            pattern.weights[8 * k + 2 * channel + 1] = static_cast<std::uint8_t>(position % 16);
        }
    }
    return pattern;
}

// Rows whose neighbours along the row have been mixed, for as long as output rows, which mix two that follow each
// other, need them.
class MixedRows {
  public:
    MixedRows(ConstPixelView source, const ResampledAxis& columns, std::uint32_t step)
        : m_source(source), m_groups((columns.count + 15) / 16), m_end(columns.last() + 1) {
        const std::uint64_t position = std::uint64_t{columns.start} * step + std::uint64_t{16} * columns.sourceStart;
        m_begin = static_cast<std::size_t>(position / 16);
        m_pattern = pairPattern(static_cast<std::uint32_t>(position % 16), step);
        const std::size_t there = m_end - m_begin;
        m_plainGroups = there >= 8 ? std::min(m_groups, (there - 8) / step) : 0;
        m_tail.resize(4 * ((m_groups - m_plainGroups) * step + 8));
        for (auto& numbers : m_numbers)
            numbers = std::make_unique_for_overwrite<std::uint16_t[]>(m_groups * 64);
    }
    const std::uint16_t* row(std::size_t index) {
        std::uint16_t* const numbers = m_numbers[index % 2].get();
        if (m_held[index % 2] != index) mix(numbers, m_source.row(index));
        m_held[index % 2] = index;
        return numbers;
    }

  private:
    void mix(std::uint16_t* numbers, const std::uint8_t* bytes) {
        const auto mixPairs = kernels::table().mixPairs;
        mixPairs(numbers, bytes + 4 * m_begin, m_pattern, m_plainGroups);
        if (m_plainGroups == m_groups) return;
        // A column that has no neighbour counts alone: as one whose neighbour is like it.
        const std::size_t from = m_begin + m_plainGroups * m_pattern.advance;
        const std::size_t rest = 4 * (m_end - from);
        std::memcpy(m_tail.data(), bytes + 4 * from, rest);
        for (std::size_t i = rest; i < m_tail.size(); i += 4)
            std::memcpy(&m_tail[i], &m_tail[rest - 4], 4);
        mixPairs(numbers + 64 * m_plainGroups, m_tail.data(), m_pattern, m_groups - m_plainGroups);
    }

    ConstPixelView m_source;
    std::size_t m_groups, m_plainGroups; // of the pattern's columns, and those that stay within the row
    std::size_t m_begin, m_end;          // the source columns in use
    kernels::PairPattern m_pattern;
    std::vector<std::uint8_t> m_tail;
    std::unique_ptr<std::uint16_t[]> m_numbers[2];
    std::size_t m_held[2] = {SIZE_MAX, SIZE_MAX};
};

void resampleBySixteenths(PixelView output, ConstPixelView source, const ResampledAxis& columns, std::uint32_t step,
                          const ResampledAxis& rows, std::uint32_t rowStep) {
    MixedRows mixed(source, columns, step);
    for (std::size_t i = 0; i < rows.count; ++i) {
        const std::uint64_t position = std::uint64_t{rows.start + i} * rowStep + std::uint64_t{16} * rows.sourceStart;
        const auto iY = static_cast<std::size_t>(position / 16);
        // The weights of bilinearRows: the row at the position counts by the fraction, the one below by the rest.
        const std::uint32_t weight = iY == 0 ? 16 : static_cast<std::uint32_t>(position % 16);
        const std::uint16_t* const first = mixed.row(weight != 0 ? iY : iY - 1);
        const std::uint16_t* const second = weight % 16 != 0 ? mixed.row(iY - 1) : first;
        kernels::table().mixRows(output.row(i), first, second, weight, 16 - weight, columns.count);
    }
}

} // namespace

void resampleBilinear(PixelView output, ConstPixelView source, const ResampledAxis& columns,
                      const ResampledAxis& rows) {
    const std::uint32_t step = sixteenthsPerStep(columns);
    const std::uint32_t rowStep = sixteenthsPerStep(rows);
    if (step != 0 && rowStep != 0) {
        resampleBySixteenths(output, source, columns, step, rows, rowStep);
    } else {
        resampleGenerally(output, source, columns, rows);
    }
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
