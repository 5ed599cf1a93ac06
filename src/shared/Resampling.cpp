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

// As kernels round it.
std::int16_t roundedSum(std::int32_t sum, unsigned shift) {
    return static_cast<std::int16_t>((sum + (1 << (shift - 1))) >> shift);
}

// The columns of the result from `begin` on, so many: how rows are summed up for them.
class Columns {
  public:
    Columns(FilterAxis& axis, ConstPixelView source, std::size_t width, unsigned fraction, bool mirrors)
        : m_axis(axis), m_source(source), m_width(width), m_mirrors(mirrors), m_taps(wholeGroups(axis.mostTaps())),
          m_shift(axis.bits() - fraction) {
        if (m_taps > source.width) m_longRow.resize(m_taps * 4);
    }

    // What one column takes beside the sums.
    std::size_t bytesEach() const { return m_taps * sizeof(std::int16_t) + sizeof(std::int32_t); }

    void choose(std::size_t begin, std::size_t count) {
        m_offsets.assign(count, 0);
        m_weights.assign(count * m_taps, 0);
        for (std::size_t i = 0; i < count; ++i) {
            std::size_t place = m_axis.weigh(m_mirrors ? m_width - 1 - begin - i : begin + i).first;
            // The group's last pixels, which count nothing, must not lie behind the row.
            const std::size_t start = m_taps > m_source.width ? 0 : std::min(place, m_source.width - m_taps);
            m_offsets[i] = static_cast<std::int32_t>(start * 4);
            for (const std::int16_t weight : m_axis.weightsFrom(0))
                m_weights[i * m_taps + kernels::tapPlace(place++ - start)] = weight;
        }
    }

    // Of row y of the source.
    void sum(std::int16_t* sums, std::size_t y) {
        const std::uint8_t* row = m_source.row(y);
        if (!m_longRow.empty()) {
            std::memcpy(m_longRow.data(), row, m_source.width * 4);
            row = m_longRow.data();
        }
        kernels::table().sumAlongRow(sums, row, {m_offsets.data(), m_weights.data(), m_taps, m_shift},
                                     m_offsets.size());
    }

  private:
    FilterAxis& m_axis;
    ConstPixelView m_source;
    std::size_t m_width;
    bool m_mirrors;
    std::size_t m_taps;
    unsigned m_shift;
    std::vector<std::int32_t> m_offsets;
    std::vector<std::int16_t> m_weights;
    std::vector<std::uint8_t> m_longRow; // of sources that are shorter than a group
};

// Of columns that are worked out from the first row to the last before the next: it stays in the cache, and takes no
// more memory for wide pictures.
constexpr std::size_t bytesAtOnce = 384 * 1024;

// The same for a single column, of so many pixels that their weights are not held all at once: those that are there go
// over all rows before the next ones come.
class WideColumn {
  public:
    WideColumn(FilterAxis& axis, ConstPixelView source, std::size_t width, unsigned fraction, bool mirrors)
        : m_axis(axis), m_source(source), m_width(width), m_mirrors(mirrors), m_shift(axis.bits() - fraction),
          m_sums(source.height * 4) {}

    std::size_t bytesEach() const { return bytesAtOnce; } // so that there is one

    void choose(std::size_t x, std::size_t) {
        const auto [first, count] = m_axis.weigh(m_mirrors ? m_width - 1 - x : x);
        std::vector<std::int32_t> totals(m_sums.size());
        for (std::size_t tap = 0; tap < count; tap += FilterAxis::mostAtOnce) {
            const std::span<const std::int16_t> weights = m_axis.weightsFrom(tap);
            for (std::size_t y = 0; y < m_source.height; ++y) {
                const std::uint8_t* pixel = m_source.row(y) + (first + tap) * 4;
                std::int32_t* const total = &totals[y * 4];
                for (std::size_t k = 0; k < weights.size(); ++k, pixel += 4)
                    for (std::size_t channel = 0; channel < 4; ++channel)
                        total[channel] += weights[k] * pixel[channel];
            }
        }
        std::ranges::transform(totals, m_sums.begin(), [&](std::int32_t total) { return roundedSum(total, m_shift); });
    }

    void sum(std::int16_t* sums, std::size_t y) const { std::copy_n(&m_sums[y * 4], 4, sums); }

  private:
    FilterAxis& m_axis;
    ConstPixelView m_source;
    std::size_t m_width;
    bool m_mirrors;
    unsigned m_shift;
    std::vector<std::int16_t> m_sums; // of all rows
};

// The sums of those rows that the next row of the result is made of. Each row is summed up once.
class SummedRows {
  public:
    SummedRows(FilterAxis& axis, unsigned fraction, std::size_t columns)
        : m_axis(axis), m_shift(axis.bits() + fraction), m_columns(columns), m_height(axis.mostTaps()),
          m_sums(m_height * columns * 4) {}

    static std::size_t bytesEach(const FilterAxis& axis) { return axis.mostTaps() * 4 * sizeof(std::int16_t); }

    // Row i of the result, where those before it were made before.
    template <class Columns>
    void make(std::uint8_t* target, std::size_t i, Columns& columns, bool isOpaque) {
        const auto [first, count] = m_axis.weigh(i);
        m_rows.clear();
        m_next = std::max(m_next, first);
        for (std::size_t y = first; y < first + count; ++y) {
            std::int16_t* const sums = &m_sums[y % m_height * m_columns * 4];
            if (y >= m_next) columns.sum(sums, y);
            m_rows.push_back(sums);
        }
        m_next = std::max(m_next, first + count);
        const std::span<const std::int16_t> weights = m_axis.weightsFrom(0);
        m_weights.assign(weights.begin(), weights.end());
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

// Rows that are made of so many that neither their sums nor their weights are held all at once: each is added to the
// sum of all as it comes, once more for every row of the result that it is in.
class TallRows {
  public:
    TallRows(FilterAxis& axis, unsigned fraction, std::size_t columns)
        : m_axis(axis), m_shift(axis.bits() + fraction), m_columns(columns), m_sums(columns * 4),
          m_totals(columns * 4) {}

    static std::size_t bytesEach(const FilterAxis&) { return 4 * (sizeof(std::int16_t) + sizeof(std::int32_t)); }

    template <class Columns>
    void make(std::uint8_t* target, std::size_t i, Columns& columns, bool isOpaque) {
        auto [y, count] = m_axis.weigh(i);
        std::ranges::fill(m_totals, 0);
        for (std::size_t tap = 0; tap < count; tap += FilterAxis::mostAtOnce) {
            for (const int weight : m_axis.weightsFrom(tap)) {
                if (weight != 0) {
                    columns.sum(m_sums.data(), y);
                    for (std::size_t k = 0; k < m_sums.size(); ++k)
                        m_totals[k] += weight * m_sums[k];
                }
                ++y;
            }
        }
        std::ranges::transform(m_totals, m_sums.begin(),
                               [&](std::int32_t total) { return roundedSum(total, m_shift); });
        // As a sum of one row, which rounding leaves as it is, so that it is held where all sums are.
        const std::int16_t* const rows[] = {m_sums.data(), m_sums.data()};
        constexpr std::int16_t weights[] = {2, 0};
        kernels::table().sumRows(target, {rows, weights, 2, 1}, m_columns, isOpaque);
    }

  private:
    FilterAxis& m_axis;
    unsigned m_shift;
    std::size_t m_columns;
    std::vector<std::int16_t> m_sums; // of one row
    std::vector<std::int32_t> m_totals;
};

template <class Rows, class Columns>
void resampleBy(PixelView target, Columns& columns, FilterAxis& along, unsigned fraction, const Resampling& how) {
    const std::size_t most = std::max<std::size_t>(1, bytesAtOnce / (columns.bytesEach() + Rows::bytesEach(along)));
    for (std::size_t x = 0; x < target.width; x += most) {
        const std::size_t count = std::min(most, target.width - x);
        columns.choose(x, count);
        Rows rows(along, fraction, count);
        for (std::size_t i = 0; i < target.height; ++i) {
            const std::size_t y = how.mirrorsRows ? target.height - 1 - i : i;
            rows.make(target.row(y) + x * 4, i, columns, how.isOpaque);
        }
    }
}

} // namespace

void resample(PixelView target, ConstPixelView source, const Resampling& how) {
    const unsigned fraction = fractionFor(static_cast<double>(source.height) / static_cast<double>(target.height));
    FilterAxis across(source.width, target.width, how.across, mostSumBits);
    FilterAxis along(source.height, target.height, how.along, mostSumBits - fraction);
    if (how.sourceWidth != 0) across.narrow(0, how.sourceWidth);
    if (how.sourceHeight != 0) along.narrow(static_cast<double>(source.height) - how.sourceHeight, how.sourceHeight);
    if (across.mostTaps() > FilterAxis::mostAtOnce) {
        WideColumn column(across, source, target.width, fraction, how.mirrorsColumns);
        resampleBy<SummedRows>(target, column, along, fraction, how);
    } else {
        Columns columns(across, source, target.width, fraction, how.mirrorsColumns);
        along.mostTaps() > FilterAxis::mostAtOnce ? resampleBy<TallRows>(target, columns, along, fraction, how)
                                                  : resampleBy<SummedRows>(target, columns, along, fraction, how);
    }
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
