// Regions of a picture's shape.
#include "kernels/kernels.h"
#include "platform/regions.h"
#include "surface/attempt.h"
#include <algorithm>
#include <bit>
#include <functional>
#include <limits>
#include <new>
#include <span>
#include <utility>
#include <vector>

namespace pixkit {

namespace {

using platform::Rect;

// Bits of pixels, one after the other from the lowest bit of the first word.
using Word = std::uint64_t;
constexpr std::size_t wordBits = 64;
static_assert(std::endian::native == std::endian::little); // kernels give these bits in bytes

// Of a row, with at least one bit behind the last pixel.
std::size_t wordsOf(std::size_t width) {
    return width / wordBits + 1;
}

std::size_t firstBit(Word word) {
    return static_cast<std::size_t>(std::countr_zero(word));
}

std::size_t lastBit(Word word) {
    return wordBits - 1 - static_cast<std::size_t>(std::countl_zero(word));
}

// The pixels of a picture that belong to a region: those with an alpha of at least the tolerance.
class Shape {
  public:
    Shape(ConstPixelView image, std::uint8_t tolerance) noexcept : m_image(image), m_tolerance(tolerance) {}

    std::size_t width() const noexcept { return m_image.width; }
    std::size_t height() const noexcept { return m_image.height; }
    // Row y from the top, into wordsOf(width) words whose last bits are 0 and stay so.
    void readRow(std::size_t y, Word* bits) const noexcept {
        kernels::table().alphaBits(reinterpret_cast<std::uint8_t*>(bits), m_image.rowFromTop(y), width(), m_tolerance);
    }

  private:
    ConstPixelView m_image;
    std::uint8_t m_tolerance;
};

// What is reached from outside of the picture by steps to the left, right, up and down through pixels that do not
// belong to a shape. There are no steps across corners: a line drawn with such steps holds what is within, and a window
// gets no holes as wide as a corner.
//
// The rows stand one behind the other, a row of nothing in front of the first and behind the last. As there is nothing
// behind the pixels of each row, there is nothing left of the next row's, as it should be: they are one long row, in
// which each run of pixels to be reached is found, and taken, once.
class Outside {
  public:
    explicit Outside(const Shape& shape) : m_rowWords(wordsOf(shape.width())) {
        const std::size_t rows = shape.height() + 2;
        if (rows > std::numeric_limits<std::size_t>::max() / wordBits / m_rowWords - 1) throw std::bad_alloc();
        m_rowBits = m_rowWords * wordBits;
        m_bits = m_rowBits * rows;
        m_closed.resize(m_rowWords * rows + 1);
        for (std::size_t y = 0; y < shape.height(); ++y)
            shape.readRow(y, rowOf(y));
        m_closed.back() = ~Word{0}; // where each search ends
        flood();
    }

    // Row y: 0 is what neither belongs to the shape nor is reached.
    const Word* row(std::size_t y) const noexcept { return m_closed.data() + (y + 1) * m_rowWords; }

  private:
    struct Run {
        std::size_t begin, end;
    };

    Word* rowOf(std::size_t y) noexcept { return m_closed.data() + (y + 1) * m_rowWords; }

    void flood() {
        take(0);
        while (!m_runs.empty()) {
            const Run run = m_runs.back();
            m_runs.pop_back();
            if (run.end > m_rowBits) takeWithin(std::max(run.begin, m_rowBits) - m_rowBits, run.end - m_rowBits);
            takeWithin(run.begin + m_rowBits, std::min(run.end + m_rowBits, m_bits));
        }
    }

    // Takes all runs that have a bit there.
    void takeWithin(std::size_t begin, std::size_t end) {
        while (begin < end && (begin = find(begin, end, ~Word{0})) < end)
            begin = take(begin);
    }

    // Takes the run around a bit of it, and returns its end.
    std::size_t take(std::size_t bit) {
        const Run run = {beginOf(bit), find(bit, m_bits, 0)};
        for (std::size_t i = run.begin; i < run.end; i = (i / wordBits + 1) * wordBits) {
            const Word rest = ~Word{0} << i % wordBits;
            const bool isLast = run.end / wordBits == i / wordBits;
            m_closed[i / wordBits] |= isLast ? rest & ~(~Word{0} << run.end % wordBits) : rest;
        }
        m_runs.push_back(run);
        return run.end;
    }

    // The first bit from `bit` on that differs from those of `others`, which are all ones or zeros; `end` if none does
    // before.
    std::size_t find(std::size_t bit, std::size_t end, Word others) const noexcept {
        std::size_t i = bit / wordBits;
        Word found = (m_closed[i] ^ others) & ~Word{0} << bit % wordBits;
        while (found == 0 && (i + 1) * wordBits < end)
            found = m_closed[++i] ^ others;
        return found == 0 ? end : std::min(i * wordBits + firstBit(found), end);
    }

    std::size_t beginOf(std::size_t bit) const noexcept {
        std::size_t i = bit / wordBits;
        Word before = m_closed[i] & ~(~Word{0} << bit % wordBits);
        while (before == 0 && i > 0)
            before = m_closed[--i];
        return before == 0 ? 0 : i * wordBits + lastBit(before) + 1;
    }

    std::size_t m_rowWords;
    std::size_t m_rowBits = 0;
    std::size_t m_bits = 0;     // of all rows
    std::vector<Word> m_closed; // a 1 for what belongs to the shape, and what has been reached
    std::vector<Run> m_runs;    // what has been reached, but not yet what lies above and below
};

// Makes rectangles of rows of bits, from the top: one for each run, and one for the same runs in rows that follow.
class Bands {
  public:
    explicit Bands(std::size_t width) : m_row(wordsOf(width)) {}

    void add(const std::vector<Word>& row) {
        if (row != m_row) {
            endBand();
            m_row = row;
            beginBand();
        }
        ++m_y;
    }
    std::vector<Rect> takeRectangles() {
        endBand();
        return std::move(m_rectangles);
    }

  private:
    void beginBand() {
        Word last = 0;
        bool isInside = false;
        for (std::size_t i = 0; i < m_row.size(); ++i) {
            Word changes = m_row[i] ^ (m_row[i] << 1 | last);
            last = m_row[i] >> (wordBits - 1);
            for (; changes != 0; changes &= changes - 1) {
                const auto x = static_cast<std::int32_t>(i * wordBits + firstBit(changes));
                if (isInside)
                    m_rectangles.back().right = x;
                else
                    m_rectangles.push_back({x, m_y, x, m_y});
                isInside = !isInside;
            }
        }
    }
    void endBand() noexcept {
        for (; m_ended < m_rectangles.size(); ++m_ended)
            m_rectangles[m_ended].bottom = m_y;
    }

    std::vector<Word> m_row;
    std::int32_t m_y = 0;
    std::vector<Rect> m_rectangles;
    std::size_t m_ended = 0;
};

std::vector<Rect> boundsOf(const Shape& shape) {
    std::vector<Word> row(wordsOf(shape.width())), columns(row.size());
    const auto isSet = [](Word word) { return word != 0; };
    std::int32_t top = 0, bottom = 0;
    for (std::size_t y = 0; y < shape.height(); ++y) {
        shape.readRow(y, row.data());
        if (std::none_of(row.begin(), row.end(), isSet)) continue;
        if (bottom == 0) top = static_cast<std::int32_t>(y);
        bottom = static_cast<std::int32_t>(y) + 1;
        std::transform(row.begin(), row.end(), columns.begin(), columns.begin(), std::bit_or<>());
    }
    if (bottom == 0) return {};
    std::size_t first = 0, last = columns.size() - 1;
    while (columns[first] == 0)
        ++first;
    while (columns[last] == 0)
        --last;
    return {{static_cast<std::int32_t>(first * wordBits + firstBit(columns[first])), top,
             static_cast<std::int32_t>(last * wordBits + lastBit(columns[last]) + 1), bottom}};
}

std::vector<Rect> enclosed(const Shape& shape) {
    const Outside outside(shape);
    std::vector<Word> row(wordsOf(shape.width()));
    Bands bands(shape.width());
    for (std::size_t y = 0; y < shape.height(); ++y) {
        shape.readRow(y, row.data());
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] |= ~outside.row(y)[i];
        bands.add(row);
    }
    return bands.takeRectangles();
}

std::vector<Rect> shaped(const Shape& shape) {
    std::vector<Word> row(wordsOf(shape.width()));
    Bands bands(shape.width());
    for (std::size_t y = 0; y < shape.height(); ++y) {
        shape.readRow(y, row.data());
        bands.add(row);
    }
    return bands.takeRectangles();
}

} // namespace

std::intptr_t cPixSheet::CreateRegion(std::int32_t RegionStyle, std::uint8_t OpaquenessTolerance) const noexcept {
    std::intptr_t region = 0;
    const Call call(*this, "CreateRegion", "RegionStyle, OpaquenessTolerance", RegionStyle, OpaquenessTolerance);
    attempt(call, [&] {
        const ConstPixelView image = HostAccess::pixels(*this);
        if (!image) return refused(noImage);
        if (RegionStyle < regionBounds || RegionStyle > regionShaped) return refused("no region has that style");
        // Alpha bytes that mean nothing may hold anything, as what GDI has drawn on.
        const Shape shape(image, state().m_AlphaImage == AlphaNone ? std::uint8_t{0} : OpaquenessTolerance);
        region = platform::ExtCreateRegion(RegionStyle == regionBounds     ? boundsOf(shape)
                                           : RegionStyle == regionEnclosed ? enclosed(shape)
                                                                           : shaped(shape));
        return doneIf(region != 0, "the system makes no region");
    });
    return region;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
