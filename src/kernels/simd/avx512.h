// The vector layer for AVX-512: vectors of 64 bytes, and shuffles of bytes. sse2.h says what a layer is.
#pragma once
#include "kernels/simd/x86_128.h"

namespace pixkit::kernels {
namespace {

using Vec = __m512i;
using HalfVec = __m256i;
using VecFloat = __m512;

constexpr std::size_t vecBytes = sizeof(Vec);

// --- memory, at any alignment
inline Vec load(const std::uint8_t* p) {
    return _mm512_loadu_si512(p);
}
inline void store(std::uint8_t* p, Vec v) {
    _mm512_storeu_si512(p, v);
}
inline HalfVec loadHalf(const std::uint8_t* p) {
    return _mm256_loadu_si256(reinterpret_cast<const HalfVec*>(p));
}
inline HalfVec load64InHalf(const std::uint8_t* p) {
    return _mm256_zextsi128_si256(load64(p));
}
inline void storeInterleaved(std::uint8_t* p, Vec low, Vec high) {
    store(p, _mm512_permutex2var_epi64(low, _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11), high));
    store(p + vecBytes, _mm512_permutex2var_epi64(low, _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15), high));
}

// --- constants
inline Vec zeros() {
    return _mm512_setzero_si512();
}
inline Vec all8(unsigned value) {
    return _mm512_set1_epi8(static_cast<char>(value));
}
inline Vec all16(unsigned value) {
    return _mm512_set1_epi16(static_cast<short>(value));
}
inline Vec all32(unsigned value) {
    return _mm512_set1_epi32(static_cast<int>(value));
}
inline Vec all64(std::uint64_t value) {
    return _mm512_set1_epi64(static_cast<long long>(value));
}
inline Vec keptConstant(Vec constant) {
    asm("" : "+v"(constant));
    return constant;
}

// --- parts of 16 bytes
inline Vec repeatedParts(Vec128 part) {
    return _mm512_broadcast_i32x4(part);
}
template <int index>
inline Vec128 partOf(Vec v) {
    if constexpr (index == 0) return _mm512_castsi512_si128(v);
    return _mm512_extracti32x4_epi32(v, index);
}
template <class PartAt>
inline Vec fromParts(PartAt partAt) {
    const auto half = [&](std::size_t i) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(partAt(i)), partAt(i + 1), 1);
    };
    return _mm512_inserti64x4(_mm512_castsi256_si512(half(0)), half(2), 1);
}

// --- bits
inline Vec bitAnd(Vec a, Vec b) {
    return _mm512_and_si512(a, b);
}
inline Vec bitOr(Vec a, Vec b) {
    return _mm512_or_si512(a, b);
}
inline Vec bitXor(Vec a, Vec b) {
    return _mm512_xor_si512(a, b);
}
inline Vec andNot(Vec a, Vec mask) { // a & ~mask
    return _mm512_andnot_si512(mask, a);
}
template <unsigned bits>
inline Vec shiftLeft32(Vec a) {
    return _mm512_slli_epi32(a, bits);
}
template <unsigned bits>
inline Vec shiftRight32(Vec a) {
    return _mm512_srli_epi32(a, bits);
}
template <unsigned bits>
inline Vec shiftRightSigned32(Vec a) {
    return _mm512_srai_epi32(a, bits);
}
template <unsigned bits>
inline Vec shiftLeft16(Vec a) {
    return _mm512_slli_epi16(a, bits);
}
template <unsigned bits>
inline Vec shiftRight16(Vec a) {
    return _mm512_srli_epi16(a, bits);
}
template <unsigned bits>
inline Vec shiftRightSigned16(Vec a) {
    return _mm512_srai_epi16(a, bits);
}
inline Vec shiftedRightSigned32(Vec a, unsigned bits) {
    return _mm512_sra_epi32(a, _mm_cvtsi32_si128(static_cast<int>(bits)));
}
// Towards the end, and towards the front; zeros follow.
template <int bytes>
inline Vec shiftBytesUp(Vec a) {
    return _mm512_bslli_epi128(a, bytes);
}
template <int bytes>
inline Vec shiftBytesDown(Vec a) {
    return _mm512_bsrli_epi128(a, bytes);
}

// --- arithmetic; lanes are unsigned unless the name says otherwise, and wrap unless it says that they saturate
inline Vec add8(Vec a, Vec b) {
    return _mm512_add_epi8(a, b);
}
inline Vec subtract8(Vec a, Vec b) {
    return _mm512_sub_epi8(a, b);
}
inline Vec addSaturated8(Vec a, Vec b) {
    return _mm512_adds_epu8(a, b);
}
inline Vec subtractSaturated8(Vec a, Vec b) {
    return _mm512_subs_epu8(a, b);
}
inline Vec min8(Vec a, Vec b) {
    return _mm512_min_epu8(a, b);
}
inline Vec averageRoundedUp8(Vec a, Vec b) {
    return _mm512_avg_epu8(a, b);
}
inline Vec add16(Vec a, Vec b) {
    return _mm512_add_epi16(a, b);
}
inline Vec subtract16(Vec a, Vec b) {
    return _mm512_sub_epi16(a, b);
}
inline HalfVec subtract16(HalfVec a, HalfVec b) {
    return _mm256_sub_epi16(a, b);
}
inline Vec addSaturated16(Vec a, Vec b) {
    return _mm512_adds_epu16(a, b);
}
inline Vec minSigned16(Vec a, Vec b) {
    return _mm512_min_epi16(a, b);
}
inline Vec maxSigned16(Vec a, Vec b) {
    return _mm512_max_epi16(a, b);
}
// The two halves of each product.
inline Vec multiplyLow16(Vec a, Vec b) {
    return _mm512_mullo_epi16(a, b);
}
inline Vec multiplyHigh16(Vec a, Vec b) {
    return _mm512_mulhi_epu16(a, b);
}
// The sums of the products of signed neighbours, in 32 bits.
inline Vec multiplyAddPairs16(Vec a, Vec b) {
    return _mm512_madd_epi16(a, b);
}
inline Vec add32(Vec a, Vec b) {
    return _mm512_add_epi32(a, b);
}
inline Vec subtract32(Vec a, Vec b) {
    return _mm512_sub_epi32(a, b);
}
inline Vec add64(Vec a, Vec b) {
    return _mm512_add_epi64(a, b);
}
// The sums of eight bytes each, in 64 bits.
inline Vec sumsOf8(Vec a) {
    return _mm512_sad_epu8(a, zeros());
}
inline Vec multiplyLow32(Vec a, Vec b) {
    return _mm512_mullo_epi32(a, b);
}

// --- comparisons: all ones where true
inline Vec equal8(Vec a, Vec b) {
    return _mm512_movm_epi8(_mm512_cmpeq_epi8_mask(a, b));
}
inline Vec equal32(Vec a, Vec b) {
    return _mm512_movm_epi32(_mm512_cmpeq_epi32_mask(a, b));
}
inline Vec greaterSigned16(Vec a, Vec b) {
    return _mm512_movm_epi16(_mm512_cmpgt_epi16_mask(a, b));
}
inline Vec greaterSigned32(Vec a, Vec b) {
    return _mm512_movm_epi32(_mm512_cmpgt_epi32_mask(a, b));
}
// The highest bit of each byte, that of the first byte lowest.
inline std::uint64_t byteMask(Vec a) {
    return _mm512_movepi8_mask(a);
}
inline Vec select(Vec mask, Vec yes, Vec no) {
    return _mm512_ternarylogic_epi64(mask, yes, no, 0xCA); // by bits
}
inline bool allZero(Vec a) {
    return _mm512_test_epi32_mask(a, a) == 0;
}
inline bool noneSet(Vec a, Vec mask) {
    return _mm512_test_epi32_mask(a, mask) == 0;
}
inline bool allSet(Vec a, Vec mask) {
    return allZero(andNot(mask, a));
}

// --- lanes
// From the front halves of both (Low) or their rear ones (High), one lane of each by turns.
inline Vec interleaveLow8(Vec a, Vec b) {
    return _mm512_unpacklo_epi8(a, b);
}
inline Vec interleaveHigh8(Vec a, Vec b) {
    return _mm512_unpackhi_epi8(a, b);
}
inline Vec interleaveLow16(Vec a, Vec b) {
    return _mm512_unpacklo_epi16(a, b);
}
inline Vec interleaveHigh16(Vec a, Vec b) {
    return _mm512_unpackhi_epi16(a, b);
}
inline Vec interleaveLow32(Vec a, Vec b) {
    return _mm512_unpacklo_epi32(a, b);
}
inline Vec interleaveHigh32(Vec a, Vec b) {
    return _mm512_unpackhi_epi32(a, b);
}
inline Vec interleaveLow64(Vec a, Vec b) {
    return _mm512_unpacklo_epi64(a, b);
}
inline Vec interleaveHigh64(Vec a, Vec b) {
    return _mm512_unpackhi_epi64(a, b);
}
// Bytes to words.
inline Vec widenLow8(Vec a) {
    return interleaveLow8(a, zeros());
}
inline Vec widenHigh8(Vec a) {
    return interleaveHigh8(a, zeros());
}
inline Vec widenUnsigned8(HalfVec v) {
    return _mm512_cvtepu8_epi16(v);
}
inline Vec widenSigned16(HalfVec v) {
    return _mm512_cvtepi16_epi32(v);
}
// Signed lanes of both to half their width, saturated: to unsigned bytes, signed bytes, signed words.
inline Vec packUnsigned16(Vec low, Vec high) {
    return _mm512_packus_epi16(low, high);
}
inline Vec packSigned16(Vec low, Vec high) {
    return _mm512_packs_epi16(low, high);
}
inline Vec packSigned32(Vec low, Vec high) {
    return _mm512_packs_epi32(low, high);
}
template <int lane>
inline Vec repeatedInParts32(Vec v) {
    return _mm512_shuffle_epi32(v, static_cast<_MM_PERM_ENUM>(lane * 0x55));
}
// The lanes of 32 bits that stand at `places`. Not a word of the layer: sse2.h has nothing like it.
inline Vec lanesAt(Vec v, Vec places) {
    return _mm512_permutexvar_epi32(places, v);
}
inline Vec packedInOrder(Vec v) {
    return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), v);
}
inline Vec packedTwiceInOrder(Vec v) {
    return lanesAt(v, _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15));
}
inline Vec reversed32(Vec v) {
    return lanesAt(v, _mm512_setr_epi32(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
}
inline Vec lastInAll32(Vec v) {
    return lanesAt(v, all32(15));
}
template <int bytes>
inline Vec128 shiftBytesUpFrom(Vec128 upper, Vec128 lower) {
    return _mm_alignr_epi8(upper, lower, 16 - bytes);
}
inline Vec runningSums32(Vec v) {
    v = add32(v, shiftBytesUp<4>(v));
    v = add32(v, shiftBytesUp<8>(v));
    // The sum of each part into all parts behind it.
    Vec sums = _mm512_alignr_epi64(_mm512_shuffle_epi32(v, _MM_PERM_DDDD), zeros(), 6);
    sums = add32(sums, _mm512_alignr_epi64(sums, zeros(), 6));
    return add32(v, add32(sums, _mm512_alignr_epi64(sums, zeros(), 4)));
}

// --- only this layer has:
// (a & mask) ^ b.
inline Vec maskedXor(Vec a, Vec mask, Vec b) {
    return _mm512_ternarylogic_epi32(a, mask, b, 0x6A);
}
// In each lane the products of its four bytes, added to the sum: unsigned ones of a with signed ones of b.
inline Vec addByteProducts(Vec sum, Vec a, Vec b) {
    return _mm512_dpbusd_epi32(sum, a, b);
}
// Whether some lane has no bit of the mask.
inline bool anyNoneSet32(Vec a, Vec mask) {
    return _mm512_testn_epi32_mask(a, mask) != 0;
}
using LaneMask = __mmask64;
inline LaneMask keptMask(LaneMask mask) {      // as keptConstant
#if defined(__x86_64__) || !defined(__clang__) // clang 14 crashes where a mask of 64 bits takes two registers
    asm("" : "+k"(mask));
#endif
    return mask;
}
// The pixels with the highest byte of each lane in their colours, the bytes of the mask.
inline Vec withHighInColours(Vec pixels, Vec lanes, LaneMask colours) {
    const Vec order = repeatedParts(_mm_setr_epi8(3, 3, 3, -1, 7, 7, 7, -1, 11, 11, 11, -1, 15, 15, 15, -1));
    return _mm512_mask_shuffle_epi8(pixels, colours, lanes, order);
}

// --- single precision
inline VecFloat allFloat(float value) {
    return _mm512_set1_ps(value);
}
inline VecFloat toFloat(Vec a) {
    return _mm512_cvtepi32_ps(a);
}
inline Vec truncated(VecFloat a) {
    return _mm512_cvttps_epi32(a);
}
inline VecFloat add(VecFloat a, VecFloat b) {
    return _mm512_add_ps(a, b);
}
inline VecFloat multiply(VecFloat a, VecFloat b) {
    return _mm512_mul_ps(a, b);
}
inline VecFloat divide(VecFloat a, VecFloat b) {
    return _mm512_div_ps(a, b);
}

// --- pixels of four bytes B, G, R, A
// The same shuffle in all parts; -1 gives a zero byte.
inline Vec shuffled(Vec v, Vec128 order) {
    return _mm512_shuffle_epi8(v, repeatedParts(order));
}
inline Vec alphaInAll(Vec pixels) {
    return shuffled(pixels, _mm_setr_epi8(3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15));
}
inline Vec alphaInAllWords(Vec words) {
    return shuffled(words, _mm_setr_epi8(6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15));
}
inline Vec lowInColours(Vec lanes) {
    return shuffled(lanes, _mm_setr_epi8(0, 0, 0, -1, 4, 4, 4, -1, 8, 8, 8, -1, 12, 12, 12, -1));
}
inline Vec whereClear(Vec pixels, Vec, Vec yes, Vec no) {
    const Vec alphaBytes = all32(0xFF000000);
    return _mm512_mask_mov_epi32(yes, _mm512_test_epi32_mask(pixels, alphaBytes), no);
}
inline Vec highInColours(Vec lanes) {
    return shuffled(lanes, _mm_setr_epi8(3, 3, 3, -1, 7, 7, 7, -1, 11, 11, 11, -1, 15, 15, 15, -1));
}
inline Vec upperWordInBoth(Vec lanes) {
    return shuffled(lanes, _mm_setr_epi8(2, 3, 2, 3, 6, 7, 6, 7, 10, 11, 10, 11, 14, 15, 14, 15));
}
inline Vec redBlueSwapped(Vec pixels) {
    return shuffled(pixels, _mm_setr_epi8(2, 1, 0, 3, 6, 5, 4, 7, 10, 9, 8, 11, 14, 13, 12, 15));
}
inline Vec128 packing3() {
    return _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
}
inline Vec128 packed3(Vec128 pixels) {
    return _mm_shuffle_epi8(pixels, packing3());
}
inline Vec packed3(Vec pixels) {
    return lanesAt(shuffled(pixels, packing3()),
                   _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 3, 7, 11, 15));
}
inline Vec128 spreading3() {
    return _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
}
inline Vec128 spread3(Vec128 v) {
    return _mm_shuffle_epi8(v, spreading3());
}
inline Vec spread3(Vec v) {
    return shuffled(v, spreading3());
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
