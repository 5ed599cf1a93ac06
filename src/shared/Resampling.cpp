#include "shared/Resampling.h"
#include "kernels/kernels.h"
#include "shared/FilterAxis.h"
#include <algorithm>
#include <cstring>
#include <vector>

namespace pixkit {

namespace {

// Sums along rows have 8 bits, a fraction, and what filters overshoot.
constexpr unsigned mostFraction = 6;
// Weights of so many bits in all, together with the fraction, keep sums of 1.5 times the largest in 31 bits.
constexpr unsigned mostSumBits = 22;

// The more rows in a sum, the smaller are their weights and the larger their errors: the fraction gives way.
unsigned fractionFor(double scale) {
    unsigned fraction = mostFraction;
    for (; scale >= 64 && fraction > 3; scale /= 2)
        --fraction;
    return fraction;
}

std::size_t wholeGroups(std::size_t taps) {
    return (taps + 3) / 4 * 4;
}

// The columns of the result from `begin` on, so many: how rows are summed up for them.
class Columns {
  public:
    Columns(FilterAxis& axis, std::size_t sourceWidth, std::size_t width, unsigned fraction, bool mirrors)
        : m_axis(axis), m_sourceWidth(sourceWidth), m_width(width), m_mirrors(mirrors),
          m_taps(wholeGroups(axis.mostTaps())), m_shift(axis.bits() - fraction) {
        if (m_taps > sourceWidth) m_longRow.resize(m_taps * 4);
    }

    // What one column takes beside the sums.
    std::size_t bytesEach() const { return m_taps * sizeof(std::int16_t) + sizeof(std::int32_t); }

    void choose(std::size_t begin, std::size_t count) {
        m_offsets.assign(count, 0);
        m_weights.assign(count * m_taps, 0);
        for (std::size_t i = 0; i < count; ++i) {
            const auto [first, tapCount] = m_axis.weigh(m_mirrors ? m_width - 1 - begin - i : begin + i);
            // The group's last pixels, which count nothing, must not lie behind the row.
            const std::size_t start = m_taps > m_sourceWidth ? 0 : std::min(first, m_sourceWidth - m_taps);
            m_offsets[i] = static_cast<std::int32_t>(start * 4);
            for (std::size_t tap = 0; tap < tapCount; ++tap)
                m_weights[i * m_taps + kernels::tapPlace(first - start + tap)] = m_axis.weights()[tap];
        }
    }

    void sum(std::int16_t* sums, const std::uint8_t* row) {
        if (!m_longRow.empty()) {
            std::memcpy(m_longRow.data(), row, m_sourceWidth * 4);
            row = m_longRow.data();
        }
        kernels::table().sumAlongRow(sums, row, {m_offsets.data(), m_weights.data(), m_taps, m_shift},
                                     m_offsets.size());
    }

  private:
    FilterAxis& m_axis;
    std::size_t m_sourceWidth, m_width;
    bool m_mirrors;
    std::size_t m_taps;
    unsigned m_shift;
    std::vector<std::int32_t> m_offsets;
    std::vector<std::int16_t> m_weights;
    std::vector<std::uint8_t> m_longRow; // of sources that are shorter than a group
};

// The sums of those rows that the next row of the result is made of. Each row is summed up once.
class SummedRows {
  public:
    SummedRows(FilterAxis& axis, unsigned fraction, std::size_t columns)
        : m_axis(axis), m_shift(axis.bits() + fraction), m_columns(columns), m_height(axis.mostTaps()),
          m_sums(m_height * columns * 4) {}

    static std::size_t bytesEach(const FilterAxis& axis) { return axis.mostTaps() * 4 * sizeof(std::int16_t); }

    // Row i of the result, where those before it were made before.
    void make(std::uint8_t* target, std::size_t i, ConstPixelView source, Columns& columns, bool isOpaque) {
        const auto [first, count] = m_axis.weigh(i);
        m_rows.clear();
        m_next = std::max(m_next, first);
        for (std::size_t y = first; y < first + count; ++y) {
            std::int16_t* const sums = &m_sums[y % m_height * m_columns * 4];
            if (y >= m_next) columns.sum(sums, source.row(y));
            m_rows.push_back(sums);
        }
        m_next = std::max(m_next, first + count);
        m_weights.assign(m_axis.weights().begin(), m_axis.weights().begin() + static_cast<std::ptrdiff_t>(count));
        if (count % 2 != 0) {
            m_rows.push_back(m_rows.back());
            m_weights.push_back(0);
        }
        kernels::table().sumRows(target, {m_rows.data(), m_weights.data(), m_rows.size(), m_shift}, m_columns,
                                 isOpaque);
    }

  private:
    FilterAxis& m_axis;
    unsigned m_shift;
    std::size_t m_columns, m_height;
    std::vector<std::int16_t> m_sums;
    std::size_t m_next = 0; // the first source row that was not summed up yet
    std::vector<const std::int16_t*> m_rows;
    std::vector<std::int16_t> m_weights;
};

// Of columns that are worked out from the first row to the last before the next: it stays in the cache, and takes no
// more memory for wide pictures.
constexpr std::size_t bytesAtOnce = 384 * 1024;

} // namespace

void resample(PixelView target, ConstPixelView source, const Resampling& how) {
    const unsigned fraction = fractionFor(static_cast<double>(source.height) / static_cast<double>(target.height));
    FilterAxis across(source.width, target.width, how.across, mostSumBits);
    FilterAxis along(source.height, target.height, how.along, mostSumBits - fraction);
    if (how.sourceWidth != 0) across.narrow(0, how.sourceWidth);
    if (how.sourceHeight != 0) along.narrow(static_cast<double>(source.height) - how.sourceHeight, how.sourceHeight);
    Columns columns(across, source.width, target.width, fraction, how.mirrorsColumns);
    const std::size_t most =
        std::max<std::size_t>(1, bytesAtOnce / (columns.bytesEach() + SummedRows::bytesEach(along)));
    for (std::size_t x = 0; x < target.width; x += most) {
        const std::size_t count = std::min(most, target.width - x);
        columns.choose(x, count);
        SummedRows rows(along, fraction, count);
        for (std::size_t i = 0; i < target.height; ++i) {
            const std::size_t y = how.mirrorsRows ? target.height - 1 - i : i;
            rows.make(target.row(y) + x * 4, i, source, columns, how.isOpaque);
        }
    }
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
