// Vector kernels for the PNG row filters.
//
// Sub, Avg and Paeth need the pixel on the left, so one pixel follows another; everything that does not depend on it is
// worked out for four pixels at once, and the left pixel stays in a register. Pixels of three bytes are spread to lanes
// of four on the way in, so that one body serves both. Blocks are loaded and stored whole: no load has to wait for
// a store that covers only a part of it.
#pragma once
#include "kernels/expand3_simd.h"
#include "kernels/scalar.h"

namespace pixkit::kernels {
namespace {

// --- how pixels of `step` bytes enter and leave: four pixels of 3 or 4 bytes, reading 16 bytes
template <int step>
inline __m128i loadFour(const std::uint8_t* p) {
    return step == 3 ? spread3(load128(p)) : load128(p);
}
template <int step>
inline void storeFour(std::uint8_t* p, __m128i lanes) {
    if (step == 4) {
        store128(p, lanes);
        return;
    }
    const __m128i bytes = gathered3(lanes);
    store64(p, bytes);
    store32(p + 8, _mm_srli_si128(bytes, 8));
}

// --- and one pixel of 6 or 8 bytes, reading 8 bytes
template <int step>
inline void storeOne(std::uint8_t* p, __m128i pixel) {
    if (step == 8) {
        store64(p, pixel);
        return;
    }
    store32(p, pixel);
    const int last = _mm_extract_epi16(pixel, 2);
    std::memcpy(p + 4, &last, 2);
}

template <int lane>
inline __m128i laneFirst(__m128i v) {
    return _mm_srli_si128(v, 4 * lane);
}

inline __m128i joined(__m128i lane0, __m128i lane1, __m128i lane2, __m128i lane3) {
    return _mm_unpacklo_epi64(_mm_unpacklo_epi32(lane0, lane1), _mm_unpacklo_epi32(lane2, lane3));
}

// --- Sub: the running sum of four pixels takes two shifted additions
struct Sub {
    __m128i left = _mm_setzero_si128();

    __m128i four(__m128i x, __m128i) {
        x = _mm_add_epi8(x, _mm_slli_si128(x, 4));
        x = _mm_add_epi8(x, _mm_slli_si128(x, 8));
        x = _mm_add_epi8(x, left);
        left = _mm_shuffle_epi32(x, 0xFF);
        return x;
    }
    __m128i one(__m128i x, __m128i) { return left = _mm_add_epi8(left, x); }
    static void rest(std::uint8_t* row, const std::uint8_t*, std::size_t from, std::size_t bytes, std::size_t step) {
        scalar::unfilterSubFrom(row, from, bytes, step);
    }
};

// --- Avg: the processor's average rounds up. On complements that is the average rounded down, and with the left pixel
// kept as its complement a step is two operations: ~(x + (left + above) / 2) = roundedUp(~left, ~above) - x.
struct Avg {
    __m128i notLeft = _mm_set1_epi8(-1);

    static __m128i complement(__m128i v) { return _mm_xor_si128(v, _mm_set1_epi8(-1)); }
    __m128i next(__m128i x, __m128i notAbove) { return notLeft = _mm_sub_epi8(_mm_avg_epu8(notLeft, notAbove), x); }
    __m128i four(__m128i x, __m128i above) {
        const __m128i notAbove = complement(above);
        const __m128i first = next(x, notAbove);
        const __m128i second = next(laneFirst<1>(x), laneFirst<1>(notAbove));
        const __m128i third = next(laneFirst<2>(x), laneFirst<2>(notAbove));
        const __m128i fourth = next(laneFirst<3>(x), laneFirst<3>(notAbove));
        return complement(joined(first, second, third, fourth));
    }
    __m128i one(__m128i x, __m128i above) { return complement(next(x, complement(above))); }
    static void rest(std::uint8_t* row, const std::uint8_t* above, std::size_t from, std::size_t bytes,
                     std::size_t step) {
        scalar::unfilterAvgFrom(row, above, from, bytes, step);
    }
};

// --- Paeth, on words. With lo, hi the smaller and larger of left and above, c the upper left byte and
// t = 3c - left - above, the predictor is lo where hi <= t, hi where t <= lo, else c: the three distances are compared
// without being computed (where both conditions hold, left = above = c). Five dependent operations a pixel.
struct Paeth {
    __m128i left = _mm_setzero_si128();      // the pixel on the left, as words in the low half
    __m128i lastAbove = _mm_setzero_si128(); // the four pixels above the previous four

    // All words; `sum` is x + upperLeft by bytes, `threshold` is 3 * upperLeft - above.
    __m128i next(__m128i above, __m128i upperLeft, __m128i threshold, __m128i sum) {
        const __m128i lo = _mm_min_epi16(left, above);
        const __m128i hi = _mm_max_epi16(left, above);
        const __m128i t = _mm_sub_epi16(threshold, left);
        const __m128i toLo = _mm_andnot_si128(_mm_cmpgt_epi16(hi, t), _mm_sub_epi8(lo, upperLeft));
        const __m128i toHi = _mm_andnot_si128(_mm_cmpgt_epi16(t, lo), _mm_sub_epi8(hi, upperLeft));
        return left = _mm_add_epi8(sum, _mm_add_epi8(toLo, toHi));
    }
    static __m128i thresholds(__m128i above, __m128i upperLeft) {
        return _mm_add_epi16(upperLeft, _mm_sub_epi16(_mm_add_epi16(upperLeft, upperLeft), above));
    }
    static __m128i highHalf(__m128i v) { return _mm_unpackhi_epi64(v, v); }
    __m128i two(__m128i x, __m128i above, __m128i upperLeft) {
        const __m128i threshold = thresholds(above, upperLeft);
        const __m128i sum = _mm_add_epi8(x, upperLeft);
        const __m128i first = next(above, upperLeft, threshold, sum);
        const __m128i second = next(highHalf(above), highHalf(upperLeft), highHalf(threshold), highHalf(sum));
        return _mm_unpacklo_epi64(first, second);
    }
    __m128i four(__m128i x, __m128i above) {
#ifdef __AVX2__
        const __m128i upperLeft = _mm_alignr_epi8(above, lastAbove, 12);
#else
        const __m128i upperLeft = _mm_or_si128(_mm_slli_si128(above, 4), _mm_srli_si128(lastAbove, 12));
#endif
        lastAbove = above;
        const __m128i zero = _mm_setzero_si128();
        const __m128i first =
            two(_mm_unpacklo_epi8(x, zero), _mm_unpacklo_epi8(above, zero), _mm_unpacklo_epi8(upperLeft, zero));
        const __m128i second =
            two(_mm_unpackhi_epi8(x, zero), _mm_unpackhi_epi8(above, zero), _mm_unpackhi_epi8(upperLeft, zero));
        return _mm_packus_epi16(first, second);
    }
    __m128i one(__m128i x, __m128i above) {
        const __m128i zero = _mm_setzero_si128();
        const __m128i upperLeft = lastAbove; // here as words
        lastAbove = _mm_unpacklo_epi8(above, zero);
        const __m128i words = next(lastAbove, upperLeft, thresholds(lastAbove, upperLeft),
                                   _mm_add_epi8(_mm_unpacklo_epi8(x, zero), upperLeft));
        return _mm_packus_epi16(words, words);
    }
    static void rest(std::uint8_t* row, const std::uint8_t* above, std::size_t from, std::size_t bytes,
                     std::size_t step) {
        scalar::unfilterPaethFrom(row, above, from, bytes, step);
    }
};

template <class Filter, int step>
void unfilterBy(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) {
    Filter filter;
    std::size_t i = 0;
    if (step <= 4) {
        for (; bytes - i >= 16; i += 4 * step)
            storeFour<step>(row + i, filter.four(loadFour<step>(row + i), loadFour<step>(above + i)));
    } else {
        for (; bytes - i >= 8; i += step)
            storeOne<step>(row + i, filter.one(load64(row + i), load64(above + i)));
    }
    Filter::rest(row, above, i, bytes, step);
}

template <class Filter>
void unfilter(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step) {
    switch (step) {
    case 3:
        return unfilterBy<Filter, 3>(row, above, bytes);
    case 4:
        return unfilterBy<Filter, 4>(row, above, bytes);
    case 6:
        return unfilterBy<Filter, 6>(row, above, bytes);
    case 8:
        return unfilterBy<Filter, 8>(row, above, bytes);
    default:
        return Filter::rest(row, above, 0, bytes, step);
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
