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
    Channels nearPixel, farPixel;
};

inline Channels channelsAt(const std::uint8_t* p) {
    return _mm256_cvtepi32_pd(_mm_cvtepu8_epi32(_mm_cvtsi32_si128(load32(p))));
}
inline Pair pairAt(const std::uint8_t* p) {
    return {channelsAt(p), channelsAt(p + 4)};
}
inline Channels product(Channels a, double weight) {
    return _mm256_mul_pd(a, _mm256_set1_pd(weight));
}
inline Channels sum(Channels a, Channels b) {
    return _mm256_add_pd(a, b);
}
inline __m128i roundedDown(Channels a) {
    return _mm256_cvttpd_epi32(a);
}
#else
struct Channels {
    __m128d low, high;
};

struct Pair {
    Channels nearPixel, farPixel;
};

inline Channels channelsOf(__m128i numbers) {
    return {_mm_cvtepi32_pd(numbers), _mm_cvtepi32_pd(_mm_unpackhi_epi64(numbers, numbers))};
}
inline Pair pairAt(const std::uint8_t* p) {
    const __m128i words = _mm_unpacklo_epi8(load64(p), _mm_setzero_si128());
    return {channelsOf(_mm_unpacklo_epi16(words, _mm_setzero_si128())),
            channelsOf(_mm_unpackhi_epi16(words, _mm_setzero_si128()))};
}
inline Channels product(Channels a, double weight) {
    const __m128d factor = _mm_set1_pd(weight);
    return {_mm_mul_pd(a.low, factor), _mm_mul_pd(a.high, factor)};
}
inline Channels sum(Channels a, Channels b) {
    return {_mm_add_pd(a.low, b.low), _mm_add_pd(a.high, b.high)};
}
inline __m128i roundedDown(Channels a) {
    return _mm_unpacklo_epi64(_mm_cvttpd_epi32(a.low), _mm_cvttpd_epi32(a.high));
}
#endif

// Four columns' weights times their row's.
inline void multiplyWeights(double* products, const double* weights, double factor) {
#ifdef __AVX2__
    _mm256_storeu_pd(products, _mm256_mul_pd(_mm256_loadu_pd(weights), _mm256_set1_pd(factor)));
#else
    _mm_storeu_pd(products, _mm_mul_pd(_mm_loadu_pd(weights), _mm_set1_pd(factor)));
    _mm_storeu_pd(products + 2, _mm_mul_pd(_mm_loadu_pd(weights + 2), _mm_set1_pd(factor)));
#endif
}

template <bool twoRows>
inline void sampleFour(std::uint8_t* dst, WeightedRows rows, const std::int32_t* offsets, const double* nearWeights,
                       const double* farWeights) {
    alignas(32) double weights[4][4];
    multiplyWeights(weights[0], nearWeights, rows.firstWeight);
    multiplyWeights(weights[1], farWeights, rows.firstWeight);
    if (twoRows) {
        multiplyWeights(weights[2], nearWeights, rows.secondWeight);
        multiplyWeights(weights[3], farWeights, rows.secondWeight);
    }
    const auto mixed = [&](std::size_t i) {
        const Pair upper = pairAt(rows.first + offsets[i]);
        Channels total = sum(product(upper.nearPixel, weights[0][i]), product(upper.farPixel, weights[1][i]));
        if (twoRows) {
            const Pair lower = pairAt(rows.second + offsets[i]);
            total = sum(total, product(lower.nearPixel, weights[2][i]));
            total = sum(total, product(lower.farPixel, weights[3][i]));
        }
        return roundedDown(total);
    };
    const __m128i left = _mm_packs_epi32(mixed(0), mixed(1));
    store128(dst, _mm_packus_epi16(left, _mm_packs_epi32(mixed(2), mixed(3))));
}

// The rows by value: their bytes could be what is stored to, as far as the compiler knows.
template <bool twoRows>
void sampleBilinearOf(std::uint8_t* dst, WeightedRows rows, const std::int32_t* offsets, const double* nearWeights,
                      const double* farWeights, std::size_t count) {
    if (count < 4) return scalar::sampleBilinear(dst, rows, offsets, nearWeights, farWeights, count);
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4)
        sampleFour<twoRows>(dst + 4 * i, rows, offsets + i, nearWeights + i, farWeights + i);
    if (i == count) return;
    i = count - 4; // what is left, and some once more
    sampleFour<twoRows>(dst + 4 * i, rows, offsets + i, nearWeights + i, farWeights + i);
}

void sampleBilinear(std::uint8_t* dst, const WeightedRows& rows, const std::int32_t* offsets, const double* nearWeights,
                    const double* farWeights, std::size_t count) {
    const auto sample = rows.second != nullptr ? sampleBilinearOf<true> : sampleBilinearOf<false>;
    sample(dst, rows, offsets, nearWeights, farWeights, count);
}

void useResample(Table& table) {
    table.gatherPixels = gatherPixels;
    table.sampleBilinear = sampleBilinear;
}

} // namespace
} // namespace pixkit::kernels
