// The operations on 16 bytes, which all instruction sets of x86 share. For sse2.h they are the vectors of all kernels;
// wider sets use them where width gains nothing, as in kernels in which each pixel needs the one before it.
#pragma once
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <immintrin.h>

namespace pixkit::kernels {
namespace {

using Vec128 = __m128i;

// --- memory, at any alignment; less than 16 bytes fill the front, and zeros what follows
inline Vec128 load128(const std::uint8_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline Vec128 load64(const std::uint8_t* p) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
}
inline Vec128 load64Twice(const std::uint8_t* p, const std::uint8_t* q) { // one behind the other
    return _mm_castpd_si128(_mm_loadh_pd(_mm_castsi128_pd(load64(p)), reinterpret_cast<const double*>(q)));
}
inline Vec128 load32(const std::uint8_t* p) {
    int value = 0;
    std::memcpy(&value, p, sizeof value);
    return _mm_cvtsi32_si128(value);
}
inline void store128(std::uint8_t* p, Vec128 v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}
inline void store64(std::uint8_t* p, Vec128 v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v);
}
inline void store32(std::uint8_t* p, Vec128 v) {
    const int low = _mm_cvtsi128_si32(v);
    std::memcpy(p, &low, sizeof low);
}

// --- constants
inline Vec128 zeros128() {
    return _mm_setzero_si128();
}
inline Vec128 all8In128(unsigned value) {
    return _mm_set1_epi8(static_cast<char>(value));
}
inline Vec128 all16In128(unsigned value) {
    return _mm_set1_epi16(static_cast<short>(value));
}
inline Vec128 all32In128(unsigned value) {
    return _mm_set1_epi32(static_cast<int>(value));
}

// --- bits
inline Vec128 bitAnd(Vec128 a, Vec128 b) {
    return _mm_and_si128(a, b);
}
inline Vec128 bitOr(Vec128 a, Vec128 b) {
    return _mm_or_si128(a, b);
}
inline Vec128 bitXor(Vec128 a, Vec128 b) {
    return _mm_xor_si128(a, b);
}
inline Vec128 andNot(Vec128 a, Vec128 mask) { // a & ~mask
    return _mm_andnot_si128(mask, a);
}
template <int bits>
inline Vec128 shiftLeft32(Vec128 a) {
    return _mm_slli_epi32(a, bits);
}
template <int bits>
inline Vec128 shiftRight32(Vec128 a) {
    return _mm_srli_epi32(a, bits);
}
template <int bits>
inline Vec128 shiftRightSigned32(Vec128 a) {
    return _mm_srai_epi32(a, bits);
}
template <int bits>
inline Vec128 shiftLeft16(Vec128 a) {
    return _mm_slli_epi16(a, bits);
}
template <int bits>
inline Vec128 shiftRight16(Vec128 a) {
    return _mm_srli_epi16(a, bits);
}
template <int bits>
inline Vec128 shiftRightSigned16(Vec128 a) {
    return _mm_srai_epi16(a, bits);
}
// By a number that is not known before.
inline Vec128 shiftedRightSigned32(Vec128 a, unsigned bits) {
    return _mm_sra_epi32(a, _mm_cvtsi32_si128(static_cast<int>(bits)));
}
// Towards the end, and towards the front; zeros follow.
template <int bytes>
inline Vec128 shiftBytesUp(Vec128 a) {
    return _mm_slli_si128(a, bytes);
}
template <int bytes>
inline Vec128 shiftBytesDown(Vec128 a) {
    return _mm_srli_si128(a, bytes);
}

// --- arithmetic; lanes are unsigned unless the name says otherwise, and wrap unless it says that they saturate
inline Vec128 add8(Vec128 a, Vec128 b) {
    return _mm_add_epi8(a, b);
}
inline Vec128 subtract8(Vec128 a, Vec128 b) {
    return _mm_sub_epi8(a, b);
}
inline Vec128 addSaturated8(Vec128 a, Vec128 b) {
    return _mm_adds_epu8(a, b);
}
inline Vec128 subtractSaturated8(Vec128 a, Vec128 b) {
    return _mm_subs_epu8(a, b);
}
inline Vec128 min8(Vec128 a, Vec128 b) {
    return _mm_min_epu8(a, b);
}
inline Vec128 averageRoundedUp8(Vec128 a, Vec128 b) {
    return _mm_avg_epu8(a, b);
}
inline Vec128 add16(Vec128 a, Vec128 b) {
    return _mm_add_epi16(a, b);
}
inline Vec128 subtract16(Vec128 a, Vec128 b) {
    return _mm_sub_epi16(a, b);
}
inline Vec128 addSaturated16(Vec128 a, Vec128 b) {
    return _mm_adds_epu16(a, b);
}
inline Vec128 minSigned16(Vec128 a, Vec128 b) {
    return _mm_min_epi16(a, b);
}
inline Vec128 maxSigned16(Vec128 a, Vec128 b) {
    return _mm_max_epi16(a, b);
}
// The two halves of each product.
inline Vec128 multiplyLow16(Vec128 a, Vec128 b) {
    return _mm_mullo_epi16(a, b);
}
inline Vec128 multiplyHigh16(Vec128 a, Vec128 b) {
    return _mm_mulhi_epu16(a, b);
}
// The sums of the products of signed neighbours, in 32 bits.
inline Vec128 multiplyAddPairs16(Vec128 a, Vec128 b) {
    return _mm_madd_epi16(a, b);
}
inline Vec128 add32(Vec128 a, Vec128 b) {
    return _mm_add_epi32(a, b);
}
inline Vec128 subtract32(Vec128 a, Vec128 b) {
    return _mm_sub_epi32(a, b);
}
inline Vec128 add64(Vec128 a, Vec128 b) {
    return _mm_add_epi64(a, b);
}
// The sums of eight bytes each, in 64 bits.
inline Vec128 sumsOf8(Vec128 a) {
    return _mm_sad_epu8(a, zeros128());
}

// --- comparisons: all ones where true
inline Vec128 equal8(Vec128 a, Vec128 b) {
    return _mm_cmpeq_epi8(a, b);
}
inline Vec128 equal32(Vec128 a, Vec128 b) {
    return _mm_cmpeq_epi32(a, b);
}
inline Vec128 equal16(Vec128 a, Vec128 b) {
    return _mm_cmpeq_epi16(a, b);
}
inline Vec128 greaterSigned16(Vec128 a, Vec128 b) {
    return _mm_cmpgt_epi16(a, b);
}
inline Vec128 greaterSigned32(Vec128 a, Vec128 b) {
    return _mm_cmpgt_epi32(a, b);
}
// The highest bit of each byte, that of the first byte lowest.
inline std::uint32_t byteMask(Vec128 a) {
    return static_cast<std::uint32_t>(_mm_movemask_epi8(a));
}

// --- lanes
// From the front halves of both (Low) or their rear ones (High), one lane of each by turns.
inline Vec128 interleaveLow8(Vec128 a, Vec128 b) {
    return _mm_unpacklo_epi8(a, b);
}
inline Vec128 interleaveHigh8(Vec128 a, Vec128 b) {
    return _mm_unpackhi_epi8(a, b);
}
inline Vec128 interleaveLow16(Vec128 a, Vec128 b) {
    return _mm_unpacklo_epi16(a, b);
}
inline Vec128 interleaveHigh16(Vec128 a, Vec128 b) {
    return _mm_unpackhi_epi16(a, b);
}
inline Vec128 interleaveLow32(Vec128 a, Vec128 b) {
    return _mm_unpacklo_epi32(a, b);
}
inline Vec128 interleaveHigh32(Vec128 a, Vec128 b) {
    return _mm_unpackhi_epi32(a, b);
}
inline Vec128 interleaveLow64(Vec128 a, Vec128 b) {
    return _mm_unpacklo_epi64(a, b);
}
inline Vec128 interleaveHigh64(Vec128 a, Vec128 b) {
    return _mm_unpackhi_epi64(a, b);
}
// Bytes to words.
inline Vec128 widenLow8(Vec128 a) {
    return interleaveLow8(a, zeros128());
}
inline Vec128 widenHigh8(Vec128 a) {
    return interleaveHigh8(a, zeros128());
}
// Signed lanes of both to half their width, saturated: to unsigned bytes, signed bytes, signed words.
inline Vec128 packUnsigned16(Vec128 low, Vec128 high) {
    return _mm_packus_epi16(low, high);
}
inline Vec128 packSigned16(Vec128 low, Vec128 high) {
    return _mm_packs_epi16(low, high);
}
inline Vec128 packSigned32(Vec128 low, Vec128 high) {
    return _mm_packs_epi32(low, high);
}
// The upper word of each lane of 32 bits in both.
inline Vec128 upperWordInBoth(Vec128 a) {
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(a, 0xF5), 0xF5);
}
template <int lane>
inline Vec128 repeated32(Vec128 a) {
    return _mm_shuffle_epi32(a, lane * 0x55);
}
// The last `bytes` of 1, 2, 4 or 8 over and over.
template <int bytes>
inline Vec128 lastRepeated(Vec128 a) {
    if (bytes == 4) return repeated32<3>(a);
    if (bytes == 1) a = interleaveHigh8(a, a);
    if (bytes < 4) a = _mm_shufflehi_epi16(a, 0xFF);
    return interleaveHigh64(a, a);
}
// The first six bytes of both halves behind one another; what follows is unspecified.
inline Vec128 packed6(Vec128 a) {
    const Vec128 first = bitAnd(a, _mm_setr_epi32(-1, 0xFFFF, 0, 0));
    return bitOr(first, shiftBytesUp<6>(shiftBytesDown<8>(a)));
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
