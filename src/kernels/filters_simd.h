// Vector kernels for the PNG row filters.
//
// Sub, Avg and Paeth need the pixel on the left, so one pixel follows another; everything that does not depend on it is
// worked out for a block of 16 bytes at once, and the left pixel stays in a register. Pixels of 3 and 6 bytes are
// spread to lanes of 4 and 8 on the way in, so that one body serves all; what the spare bytes of a lane hold never
// matters, since no operation carries from one byte to another. Blocks are loaded and stored whole and never overlap
// what was just stored: no load has to wait for a store that covers only a part of it.
#pragma once
#include "kernels/expand3_simd.h"
#include "kernels/scalar.h"

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
inline __m128i loadBlock(const std::uint8_t* p) {
    const __m128i v = load128(p);
    if (step == 3) return spread3(v);
    if (step == 6) return _mm_unpacklo_epi64(v, _mm_srli_si128(v, 6));
    return v;
}

template <int step>
inline void storeBlock(std::uint8_t* p, __m128i lanes) {
    if (step != 3 && step != 6) {
        store128(p, lanes);
        return;
    }
    const __m128i bytes = step == 3 ? gathered3(lanes) : gathered6(lanes);
    store64(p, bytes);
    store32(p + 8, _mm_srli_si128(bytes, 8));
}

// Puts the first n bytes of two vectors behind one another.
template <int n>
inline __m128i joined(__m128i first, __m128i second) {
    if (n == 8) return _mm_unpacklo_epi64(first, second);
    if (n == 4) return _mm_unpacklo_epi32(first, second);
    return n == 2 ? _mm_unpacklo_epi16(first, second) : _mm_unpacklo_epi8(first, second);
}

// The last lane in all lanes.
template <int lane>
inline __m128i lastLane(__m128i v) {
    if (lane == 4) return _mm_shuffle_epi32(v, 0xFF);
    if (lane == 1) v = _mm_unpackhi_epi8(v, v);
    if (lane < 4) v = _mm_shufflehi_epi16(v, 0xFF);
    return _mm_unpackhi_epi64(v, v);
}

// --- Sub: the running sum of a block takes one shifted addition per power of two
template <int lane>
struct Sub {
    __m128i left = _mm_setzero_si128(); // in all lanes

    __m128i block(__m128i x, __m128i) {
        if (lane <= 1) x = _mm_add_epi8(x, _mm_slli_si128(x, 1));
        if (lane <= 2) x = _mm_add_epi8(x, _mm_slli_si128(x, 2));
        if (lane <= 4) x = _mm_add_epi8(x, _mm_slli_si128(x, 4));
        x = _mm_add_epi8(x, _mm_slli_si128(x, 8));
        x = _mm_add_epi8(x, left);
        left = lastLane<lane>(x);
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
    __m128i notLeft = _mm_set1_epi8(-1); // in the first lane

    // The complements of the pixels in the first n bytes.
    template <int n>
    __m128i complements(__m128i x, __m128i notAbove) {
        if constexpr (n == lane) {
            return notLeft = _mm_sub_epi8(_mm_avg_epu8(notLeft, notAbove), x);
        } else {
            const __m128i first = complements<n / 2>(x, notAbove);
            const __m128i second = complements<n / 2>(_mm_srli_si128(x, n / 2), _mm_srli_si128(notAbove, n / 2));
            return joined<n / 2>(first, second);
        }
    }
    __m128i block(__m128i x, __m128i above) {
        const __m128i ones = _mm_set1_epi8(-1);
        return _mm_xor_si128(complements<16>(x, _mm_xor_si128(above, ones)), ones);
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
struct PaethTerms {
    __m128i above, upperLeft;
    __m128i upTo; // lo is predicted for left up to this
    __m128i from; // hi is predicted for left from this on
    __m128i sum;  // x + c, by bytes
};

inline PaethTerms paethTerms(__m128i x, __m128i above, __m128i upperLeft) {
    const __m128i a = _mm_sub_epi16(_mm_add_epi16(upperLeft, _mm_add_epi16(upperLeft, upperLeft)), above);
    const __m128i b = _mm_sub_epi16(a, above);
    const __m128i halfUp = _mm_srai_epi16(_mm_add_epi16(a, _mm_set1_epi16(1)), 1);
    return {above, upperLeft, _mm_min_epi16(_mm_srai_epi16(a, 1), b), _mm_max_epi16(halfUp, b),
            _mm_add_epi8(x, upperLeft)};
}

template <int n>
inline PaethTerms shiftedDown(const PaethTerms& t) {
    return {_mm_srli_si128(t.above, n), _mm_srli_si128(t.upperLeft, n), _mm_srli_si128(t.upTo, n),
            _mm_srli_si128(t.from, n), _mm_srli_si128(t.sum, n)};
}

template <int lane>
struct Paeth {
    __m128i left = _mm_setzero_si128();      // as words in the first lane
    __m128i lastAbove = _mm_setzero_si128(); // the block above the previous block, as bytes

    // The pixels in the first n bytes, as words.
    template <int n>
    __m128i pixels(const PaethTerms& t) {
        if constexpr (n == 2 * lane) {
            const __m128i lo = _mm_min_epi16(left, t.above);
            const __m128i hi = _mm_max_epi16(left, t.above);
            const __m128i toLo = _mm_andnot_si128(_mm_cmpgt_epi16(left, t.upTo), _mm_sub_epi8(lo, t.upperLeft));
            const __m128i toHi = _mm_andnot_si128(_mm_cmpgt_epi16(t.from, left), _mm_sub_epi8(hi, t.upperLeft));
            return left = _mm_add_epi8(_mm_add_epi8(t.sum, toLo), toHi);
        } else {
            const __m128i first = pixels<n / 2>(t);
            const __m128i second = pixels<n / 2>(shiftedDown<n / 2>(t));
            return joined<n / 2>(first, second);
        }
    }
    __m128i block(__m128i x, __m128i above) {
#ifdef __AVX2__
        const __m128i upperLeft = _mm_alignr_epi8(above, lastAbove, 16 - lane);
#else
        const __m128i upperLeft = _mm_or_si128(_mm_slli_si128(above, lane), _mm_srli_si128(lastAbove, 16 - lane));
#endif
        lastAbove = above;
        const __m128i zero = _mm_setzero_si128();
        const __m128i first = pixels<16>(
            paethTerms(_mm_unpacklo_epi8(x, zero), _mm_unpacklo_epi8(above, zero), _mm_unpacklo_epi8(upperLeft, zero)));
        const __m128i second = pixels<16>(
            paethTerms(_mm_unpackhi_epi8(x, zero), _mm_unpackhi_epi8(above, zero), _mm_unpackhi_epi8(upperLeft, zero)));
        return _mm_packus_epi16(first, second);
    }
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
    scalar::unfilterUp(row, above, bytes);
}

void unfilterAvg(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step) {
    unfilter<Avg>(row, above, bytes, step);
}

void unfilterPaeth(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step) {
    unfilter<Paeth>(row, above, bytes, step);
}

void useFilters(Table& table) {
    table.unfilterSub = unfilterSub;
    table.unfilterUp = unfilterUp;
    table.unfilterAvg = unfilterAvg;
    table.unfilterPaeth = unfilterPaeth;
}

} // namespace
} // namespace pixkit::kernels
