// Between pixels of three bytes and lanes of four.
#pragma once
#include "kernels/simd.h"

namespace pixkit::kernels {
namespace {

// The first four pixels of three bytes, each at the start of a lane of four; the fourth byte is 0.
inline __m128i spread3(__m128i v) {
#ifdef __AVX2__
    return _mm_shuffle_epi8(v, _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1));
#else
    const __m128i pairs = _mm_unpacklo_epi64(v, _mm_srli_si128(v, 6));
    const __m128i first = _mm_and_si128(pairs, _mm_set1_epi64x(0x0000'0000'00FF'FFFF));
    const __m128i second = _mm_and_si128(_mm_slli_epi64(pairs, 8), _mm_set1_epi64x(0x00FF'FFFF'0000'0000));
    return _mm_or_si128(first, second);
#endif
}

// And back: the first three bytes of four lanes together in the first twelve bytes; the rest is unspecified.
inline __m128i gathered3(__m128i v) {
#ifdef __AVX2__
    return _mm_shuffle_epi8(v, _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
#else
    return packed3(v);
#endif
}

// The same for two lanes of eight of which six bytes count.
inline __m128i gathered6(__m128i v) {
    const __m128i first = _mm_and_si128(v, _mm_setr_epi32(-1, 0xFFFF, 0, 0));
    return _mm_or_si128(first, _mm_slli_si128(_mm_srli_si128(v, 8), 6));
}

// One vector of pixels from three bytes each; the fourth byte is 0. Reads `expand3Reads` bytes.
#ifdef __AVX2__
constexpr std::size_t expand3Reads = 28;
inline Vec expanded3(const std::uint8_t* src) {
    const Vec halves = _mm256_inserti128_si256(_mm256_castsi128_si256(load128(src)), load128(src + 12), 1);
    return shuffled(halves, _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1));
}
#else
constexpr std::size_t expand3Reads = 16;
inline Vec expanded3(const std::uint8_t* src) {
    return spread3(load128(src));
}
#endif

} // namespace
} // namespace pixkit::kernels
