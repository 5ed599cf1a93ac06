// Vector kernels that undo the PNG row filters.
//
// Sub, Avg and Paeth need the pixel on the left, so one pixel follows another; everything that does not depend on it is
// worked out for a block of 16 bytes at once, and the left pixel stays in a register. Pixels of 3 and 6 bytes are
// spread to lanes of 4 and 8 on the way in, so that one body serves all; what the spare bytes of a lane hold never
// matters, since no operation carries from one byte to another. Blocks are loaded and stored whole and never overlap
// what was just stored: no load has to wait for a store that covers only a part of it.
#pragma once
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

constexpr int laneBytes(int step) {
    return step == 3 ? 4 : step == 6 ? 8 : step;
}

// How many bytes of a row a block of 16 bytes of lanes stands for.
constexpr std::size_t blockBytes(int step) {
    return static_cast<std::size_t>(16 / laneBytes(step) * step);
}

template <int step>
inline Vec128 loadBlock(const std::uint8_t* p) {
    const Vec128 v = load128(p);
    if (step == 3) return spread3(v);
    if (step == 6) return interleaveLow64(v, shiftBytesDown<6>(v));
    return v;
}

template <int step>
inline void storeBlock(std::uint8_t* p, Vec128 lanes) {
    if (step != 3 && step != 6) {
        store128(p, lanes);
        return;
    }
    const Vec128 bytes = step == 3 ? packed3(lanes) : packed6(lanes);
    store64(p, bytes);
    store32(p + 8, shiftBytesDown<8>(bytes));
}

// Puts the first n bytes of two vectors behind one another.
template <int n, class V>
inline V joined(V first, V second) {
    if (n == 8) return interleaveLow64(first, second);
    if (n == 4) return interleaveLow32(first, second);
    return n == 2 ? interleaveLow16(first, second) : interleaveLow8(first, second);
}

// --- Sub: the running sum of a block takes one shifted addition per power of two
template <int lane>
struct Sub {
    Vec128 left = zeros128(); // in all lanes

    Vec128 block(Vec128 x, Vec128) {
        if (lane <= 1) x = add8(x, shiftBytesUp<1>(x));
        if (lane <= 2) x = add8(x, shiftBytesUp<2>(x));
        if (lane <= 4) x = add8(x, shiftBytesUp<4>(x));
        x = add8(x, shiftBytesUp<8>(x));
        x = add8(x, left);
        left = lastRepeated<lane>(x);
        return x;
    }
    static void rest(std::uint8_t* row, const std::uint8_t*, std::size_t from, std::size_t bytes, std::size_t step) {
        scalar::unfilterSubFrom(row, from, bytes, step);
    }
};

// --- Avg: the processor's average rounds up. On complements that is the average rounded down, and with the left pixel
// kept as its complement a step is two operations: ~(x + (left + above) / 2) = roundedUp(~left, ~above) - x.
template <int lane>
struct Avg {
    Vec128 notLeft = all8In128(0xFF); // in the first lane

    // The complements of the pixels in the first n bytes.
    template <int n>
    Vec128 complements(Vec128 x, Vec128 notAbove) {
        if constexpr (n == lane) {
            return notLeft = subtract8(averageRoundedUp8(notLeft, notAbove), x);
        } else {
            const Vec128 first = complements<n / 2>(x, notAbove);
            const Vec128 second = complements<n / 2>(shiftBytesDown<n / 2>(x), shiftBytesDown<n / 2>(notAbove));
            return joined<n / 2>(first, second);
        }
    }
    Vec128 block(Vec128 x, Vec128 above) {
        const Vec128 ones = all8In128(0xFF);
        return bitXor(complements<16>(x, bitXor(above, ones)), ones);
    }
    static void rest(std::uint8_t* row, const std::uint8_t* above, std::size_t from, std::size_t bytes,
                     std::size_t step) {
        scalar::unfilterAvgFrom(row, above, from, bytes, step);
    }
};

// --- Paeth, on words. With lo, hi the smaller and larger of left and above, c the upper left byte and
// t = 3c - left - above, the predictor is lo where hi <= t, hi where t <= lo, else c: the standard's three distances
// are compared without being computed (where both conditions hold, left = above = c). Solved for left, both conditions
// compare it with bounds that depend on the row above only, which leaves five dependent operations a pixel.
//
// Tried: comparing hi and lo with t (as deep, a tenth slower, and the compiler reorders the sum for worse); choosing
// with byte blends (a seventh faster on some processors, half as fast on others that take three cycles for one).
template <class V>
struct PaethTerms {
    V above, upperLeft;
    V upTo; // lo is predicted for left up to this
    V from; // hi is predicted for left from this on
    V sum;  // x + c, by bytes
};

template <class V>
inline PaethTerms<V> paethTerms(V x, V above, V upperLeft) {
    const V a = subtract16(add16(upperLeft, add16(upperLeft, upperLeft)), above);
    const V b = subtract16(a, above);
    const V half = shiftRightSigned16<1>(a);
    return {above, upperLeft, minSigned16(half, b), maxSigned16(subtract16(a, half), b), add8(x, upperLeft)};
}

template <int n, class V>
inline PaethTerms<V> shiftedDown(const PaethTerms<V>& t) {
    return {shiftBytesDown<n>(t.above), shiftBytesDown<n>(t.upperLeft), shiftBytesDown<n>(t.upTo),
            shiftBytesDown<n>(t.from), shiftBytesDown<n>(t.sum)};
}

// Blocks of 16 bytes, of as many rows as a vector has parts of 16 bytes.
struct OneRow {
    using Vector = Vec128;
};
template <int lane, class Rows>
struct PaethBlocks {
    using V = typename Rows::Vector;
    V left{};      // as words in the first lane
    V lastAbove{}; // the block above the previous block, as bytes

    // The pixels in the first n bytes, as words.
    template <int n>
    V pixels(const PaethTerms<V>& t) {
        if constexpr (n == 2 * lane) {
            const V lo = minSigned16(left, t.above);
            const V hi = maxSigned16(left, t.above);
            const V toLo = andNot(subtract8(lo, t.upperLeft), greaterSigned16(left, t.upTo));
            const V toHi = andNot(subtract8(hi, t.upperLeft), greaterSigned16(t.from, left));
            return left = add8(add8(t.sum, toLo), toHi);
        } else {
            const V first = pixels<n / 2>(t);
            const V second = pixels<n / 2>(shiftedDown<n / 2>(t));
            return joined<n / 2>(first, second);
        }
    }
    V block(V x, V above) {
        const V upperLeft = shiftBytesUpFrom<lane>(above, lastAbove);
        lastAbove = above;
        const V first = pixels<16>(paethTerms(widenLow8(x), widenLow8(above), widenLow8(upperLeft)));
        const V second = pixels<16>(paethTerms(widenHigh8(x), widenHigh8(above), widenHigh8(upperLeft)));
        return packUnsigned16(first, second);
    }
};

template <int lane>
struct Paeth : PaethBlocks<lane, OneRow> {
    static void rest(std::uint8_t* row, const std::uint8_t* above, std::size_t from, std::size_t bytes,
                     std::size_t step) {
        scalar::unfilterPaethFrom(row, above, from, bytes, step);
    }
};

template <template <int> class Filter, int step>
void unfilterBy(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) {
    Filter<laneBytes(step)> filter;
    std::size_t i = 0;
    for (; bytes - i >= 16; i += blockBytes(step))
        storeBlock<step>(row + i, filter.block(loadBlock<step>(row + i), loadBlock<step>(above + i)));
    filter.rest(row, above, i, bytes, step);
}

template <template <int> class Filter>
void unfilter(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step) {
    switch (step) {
    case 1:
        return unfilterBy<Filter, 1>(row, above, bytes);
    case 2:
        return unfilterBy<Filter, 2>(row, above, bytes);
    case 3:
        return unfilterBy<Filter, 3>(row, above, bytes);
    case 4:
        return unfilterBy<Filter, 4>(row, above, bytes);
    case 6:
        return unfilterBy<Filter, 6>(row, above, bytes);
    case 8:
        return unfilterBy<Filter, 8>(row, above, bytes);
    default:
        return Filter<1>::rest(row, above, 0, bytes, step); // no PNG has pixels of 5 or 7 bytes
    }
}

void unfilterSub(std::uint8_t* row, std::size_t bytes, std::size_t step) {
    unfilter<Sub>(row, row, bytes, step);
}

void unfilterUp(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) {
    for (; bytes >= vecBytes; bytes -= vecBytes, row += vecBytes, above += vecBytes)
        store(row, add8(load(row), load(above)));
    reference.unfilterUp(row, above, bytes);
}

void unfilterAvg(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step) {
    unfilter<Avg>(row, above, bytes, step);
}

void unfilterPaeth(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step) {
    unfilter<Paeth>(row, above, bytes, step);
}

void unfilterPaethTwice(std::uint8_t* row, std::uint8_t* below, const std::uint8_t* above, std::size_t bytes,
                        std::size_t step) {
    unfilterPaeth(row, above, bytes, step);
    unfilterPaeth(below, row, bytes, step);
}

inline void useUnfilter(Table& table) {
    table.unfilterSub = unfilterSub;
    table.unfilterUp = unfilterUp;
    table.unfilterAvg = unfilterAvg;
    table.unfilterPaeth = unfilterPaeth;
    table.unfilterPaethTwice = unfilterPaethTwice;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
