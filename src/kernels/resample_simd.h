// Vector kernels for resampling.
#pragma once
#include "kernels/scalar.h"
#include "kernels/simd.h"

namespace pixkit::kernels {
namespace {

// --- nearest pixels

inline __m128i fourPixels(const std::uint8_t* src, const std::int32_t* offsets) {
    const auto pixel = [&](int i) { return _mm_cvtsi32_si128(load32(src + offsets[i])); };
    return _mm_unpacklo_epi64(_mm_unpacklo_epi32(pixel(0), pixel(1)), _mm_unpacklo_epi32(pixel(2), pixel(3)));
}

// Gather instructions were tried and are slower than single loads, by half where memory is the limit.
void gatherPixels(std::uint8_t* dst, const std::uint8_t* src, const std::int32_t* offsets, std::size_t count) {
#ifdef __AVX2__
    // Eight pixels out of the eight or sixteen that begin with the first of them, as long as these are in the row.
    const std::int32_t end = count > 0 ? offsets[count - 1] + 4 : 0;
    for (; count >= 8; count -= 8, dst += 32, offsets += 8) {
        const std::int32_t begin = offsets[0];
        const std::int32_t span = offsets[7] - begin;
        if (span >= 64 || end - begin < 64) {
            store128(dst, fourPixels(src, offsets));
            store128(dst + 16, fourPixels(src, offsets + 4));
            continue;
        }
        const Vec bytes = subtract32(load(reinterpret_cast<const std::uint8_t*>(offsets)), _mm256_set1_epi32(begin));
        const Vec places = right32<2>(bytes);
        Vec pixels = _mm256_permutevar8x32_epi32(load(src + begin), places);
        if (span >= 32) {
            const Vec more = _mm256_permutevar8x32_epi32(load(src + begin + 32), places);
            pixels = select(_mm256_cmpgt_epi32(bytes, all32(31)), more, pixels);
        }
        store(dst, pixels);
    }
#endif
    for (; count >= 4; count -= 4, dst += 16, offsets += 4)
        store128(dst, fourPixels(src, offsets));
    scalar::gatherPixels(dst, src, offsets, count);
}

// --- bilinear: the four channels of a pixel side by side in double precision

#ifdef __AVX2__
using Channels = __m256d;
struct Pair {
    Channels near, far;
};

// A byte in the lowest place of 2^52 makes that larger by the byte's value. Taking it away again is less work than a
// conversion.
inline Channels channelsAt(const std::uint8_t* p) {
    const __m256d place = _mm256_set1_pd(0x1p52);
    const __m256i bytes = _mm256_cvtepu8_epi64(_mm_cvtsi32_si128(load32(p)));
    return _mm256_sub_pd(_mm256_or_pd(_mm256_castsi256_pd(bytes), place), place);
}
inline Pair pairAt(const std::uint8_t* p) {
    return {channelsAt(p), channelsAt(p + 4)};
}
inline Channels channelsAt(const double* p) {
    return _mm256_loadu_pd(p);
}
inline void storeChannels(double* p, Channels a) {
    _mm256_storeu_pd(p, a);
}
inline Channels product(Channels a, Channels b) {
    return _mm256_mul_pd(a, b);
}
inline Channels sum(Channels a, Channels b) {
    return _mm256_add_pd(a, b);
}
inline __m128i roundedDown(Channels a) {
    return _mm256_cvttpd_epi32(a);
}
using Weight = __m256d;
inline Weight weightOf(const double* p) {
    return _mm256_broadcast_sd(p);
}
#else
struct Channels {
    __m128d low, high;
};
struct Pair {
    Channels near, far;
};
using Weight = __m128d; // in both halves

inline Channels channelsOf(__m128i numbers) {
    return {_mm_cvtepi32_pd(numbers), _mm_cvtepi32_pd(_mm_unpackhi_epi64(numbers, numbers))};
}
inline Pair pairOf(__m128i words) {
    return {channelsOf(_mm_unpacklo_epi16(words, _mm_setzero_si128())),
            channelsOf(_mm_unpackhi_epi16(words, _mm_setzero_si128()))};
}
inline Channels channelsAt(const std::uint8_t* p) {
    return pairOf(_mm_unpacklo_epi8(_mm_cvtsi32_si128(load32(p)), _mm_setzero_si128())).near;
}
inline Pair pairAt(const std::uint8_t* p) {
    return pairOf(_mm_unpacklo_epi8(load64(p), _mm_setzero_si128()));
}
inline Channels channelsAt(const double* p) {
    return {_mm_loadu_pd(p), _mm_loadu_pd(p + 2)};
}
inline void storeChannels(double* p, Channels a) {
    _mm_storeu_pd(p, a.low);
    _mm_storeu_pd(p + 2, a.high);
}
inline Weight product(Weight a, Weight b) {
    return _mm_mul_pd(a, b);
}
inline Channels product(Channels a, Weight weight) {
    return {_mm_mul_pd(a.low, weight), _mm_mul_pd(a.high, weight)};
}
inline Channels sum(Channels a, Channels b) {
    return {_mm_add_pd(a.low, b.low), _mm_add_pd(a.high, b.high)};
}
inline __m128i roundedDown(Channels a) {
    return _mm_unpacklo_epi64(_mm_cvttpd_epi32(a.low), _mm_cvttpd_epi32(a.high));
}
inline Weight weightOf(const double* p) {
    return _mm_set1_pd(*p);
}
#endif

inline Pair pairAt(const double* p) {
    return {channelsAt(p), channelsAt(p + 4)};
}

void widenPixels(double* dst, const std::uint8_t* src, std::size_t count) {
    for (; count > 0; --count, dst += 4, src += 4)
        storeChannels(dst, channelsAt(src));
}

// One pixel's channels as four numbers. Working out the weights of four columns at once, and loading each from memory
// again, was tried and is slower by a third.
template <bool twoRows, class Rows>
inline __m128i mixedAt(const Rows& rows, std::int32_t offset, const double* nearWeight, const double* farWeight) {
    const Weight near = weightOf(nearWeight);
    const Weight far = weightOf(farWeight);
    const Weight first = weightOf(&rows.firstWeight);
    const Pair upper = pairAt(rows.first + offset);
    Channels total = sum(product(upper.near, product(near, first)), product(upper.far, product(far, first)));
    if (twoRows) {
        const Weight second = weightOf(&rows.secondWeight);
        const Pair lower = pairAt(rows.second + offset);
        total = sum(total, product(lower.near, product(near, second)));
        total = sum(total, product(lower.far, product(far, second)));
    }
    return roundedDown(total);
}

template <bool twoRows, class Rows>
inline void sampleFour(std::uint8_t* dst, const Rows& rows, const std::int32_t* offsets, const double* nearWeights,
                       const double* farWeights) {
    const auto mixed = [&](std::size_t i) {
        return mixedAt<twoRows>(rows, offsets[i], nearWeights + i, farWeights + i);
    };
    const __m128i left = _mm_packs_epi32(mixed(0), mixed(1));
    store128(dst, _mm_packus_epi16(left, _mm_packs_epi32(mixed(2), mixed(3))));
}

// The rows by value: their weights could be what is stored to, as far as the compiler knows.
template <bool twoRows, class Rows>
void sampleRow(std::uint8_t* dst, Rows rows, const std::int32_t* offsets, const double* nearWeights,
               const double* farWeights, std::size_t count) {
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4)
        sampleFour<twoRows>(dst + 4 * i, rows, offsets + i, nearWeights + i, farWeights + i);
    if (i == count) return;
    i = count - 4; // what is left, and some once more
    sampleFour<twoRows>(dst + 4 * i, rows, offsets + i, nearWeights + i, farWeights + i);
}

void sampleBilinear(std::uint8_t* dst, const WeightedRows& rows, const std::int32_t* offsets, const double* nearWeights,
                    const double* farWeights, std::size_t count) {
    if (count < 4) return scalar::sampleBilinear(dst, rows, offsets, nearWeights, farWeights, count);
    (rows.second != nullptr ? sampleRow<true, WeightedRows>
                            : sampleRow<false, WeightedRows>)(dst, rows, offsets, nearWeights, farWeights, count);
}

void sampleWidened(std::uint8_t* dst, const WeightedWideRows& rows, const std::int32_t* offsets,
                   const double* nearWeights, const double* farWeights, std::size_t count) {
    if (count < 4) return scalar::sampleWidened(dst, rows, offsets, nearWeights, farWeights, count);
    (rows.second != nullptr ? sampleRow<true, WeightedWideRows>
                            : sampleRow<false, WeightedWideRows>)(dst, rows, offsets, nearWeights, farWeights, count);
}

#ifndef __AVX2__ // two positions in a vector were tried and are slower than one

// --- walks: a vector holds the four channels of a pixel and of the next in its row as words

// Weights of a pixel and of the next, as pairs of words, for positions with 32 bits behind the point.
inline __m128i weightPairs(const std::uint32_t* fractions) {
    const __m128i next = _mm_srli_epi32(load128(reinterpret_cast<const std::uint8_t*>(fractions)), 24);
    return _mm_add_epi32(_mm_sub_epi32(_mm_slli_epi32(next, 16), next), _mm_set1_epi32(256));
}

// The channels of one position as four numbers. Sums of 16 bits are kept in signed words, 32,768 below what they are.
inline __m128i mixedChannels(const std::uint8_t* p, std::size_t stride, __m128i columnWeights, __m128i rowWeights) {
    const __m128i row = _mm_unpacklo_epi8(load64(p), _mm_setzero_si128());
    const __m128i nextRow = _mm_unpacklo_epi8(load64(p + stride), _mm_setzero_si128());
    const __m128i offset = _mm_set1_epi32(32768);
    const __m128i left = _mm_madd_epi16(_mm_unpacklo_epi16(row, nextRow), rowWeights);
    const __m128i right = _mm_madd_epi16(_mm_unpackhi_epi16(row, nextRow), rowWeights);
    const __m128i sides = _mm_packs_epi32(_mm_sub_epi32(left, offset), _mm_sub_epi32(right, offset));
    const __m128i pairs = _mm_unpacklo_epi16(sides, _mm_unpackhi_epi64(sides, sides));
    const __m128i total = _mm_add_epi32(_mm_madd_epi16(pairs, columnWeights), _mm_set1_epi32(32768 * 256));
    return _mm_srli_epi32(total, 16);
}

void walkBilinear(std::uint8_t* dst, const PixelWalk& from, std::size_t count) {
    PixelWalk walk = from;
    auto u = static_cast<std::uint64_t>(walk.u);
    auto v = static_cast<std::uint64_t>(walk.v);
    const auto du = static_cast<std::uint64_t>(walk.du);
    const auto dv = static_cast<std::uint64_t>(walk.dv);
    for (; count >= 4; count -= 4, dst += 16) {
        const std::uint8_t* p[4];
        std::uint32_t columns[4];
        std::uint32_t rows[4];
        for (int i = 0; i < 4; ++i, u += du, v += dv) {
            p[i] = walk.origin + (v >> 32) * walk.stride + (u >> 32) * 4;
            columns[i] = static_cast<std::uint32_t>(u);
            rows[i] = static_cast<std::uint32_t>(v);
        }
        const __m128i x = weightPairs(columns);
        const __m128i y = weightPairs(rows);
        const __m128i first = mixedChannels(p[0], walk.stride, _mm_shuffle_epi32(x, 0x00), _mm_shuffle_epi32(y, 0x00));
        const __m128i second = mixedChannels(p[1], walk.stride, _mm_shuffle_epi32(x, 0x55), _mm_shuffle_epi32(y, 0x55));
        const __m128i third = mixedChannels(p[2], walk.stride, _mm_shuffle_epi32(x, 0xAA), _mm_shuffle_epi32(y, 0xAA));
        const __m128i fourth = mixedChannels(p[3], walk.stride, _mm_shuffle_epi32(x, 0xFF), _mm_shuffle_epi32(y, 0xFF));
        store128(dst, _mm_packus_epi16(_mm_packs_epi32(first, second), _mm_packs_epi32(third, fourth)));
    }
    walk.u = static_cast<std::int64_t>(u);
    walk.v = static_cast<std::int64_t>(v);
    scalar::walkBilinear(dst, walk, count);
}

#endif

void useResample(Table& table) {
#ifndef __AVX2__
    table.walkBilinear = walkBilinear;
#endif
    table.gatherPixels = gatherPixels;
    table.widenPixels = widenPixels;
    table.sampleBilinear = sampleBilinear;
    table.sampleWidened = sampleWidened;
}

} // namespace
} // namespace pixkit::kernels
