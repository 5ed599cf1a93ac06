// The vector layer for AVX2: vectors of 32 bytes, and shuffles of bytes. sse2.h says what a layer is.
#pragma once
#include "kernels/simd/x86_128.h"

namespace pixkit::kernels {
namespace {

using Vec = __m256i;
using HalfVec = Vec128;
using VecFloat = __m256;

constexpr std::size_t vecBytes = sizeof(Vec);

// --- memory, at any alignment
inline Vec load(const std::uint8_t* p) {
    return _mm256_loadu_si256(reinterpret_cast<const Vec*>(p));
}
inline void store(std::uint8_t* p, Vec v) {
    _mm256_storeu_si256(reinterpret_cast<Vec*>(p), v);
}
inline HalfVec loadHalf(const std::uint8_t* p) {
    return load128(p);
}
inline HalfVec load64InHalf(const std::uint8_t* p) {
    return load64(p);
}
inline void storeInterleaved(std::uint8_t* p, Vec low, Vec high) {
    store(p, _mm256_permute2x128_si256(low, high, 0x20));
    store(p + vecBytes, _mm256_permute2x128_si256(low, high, 0x31));
}

// --- constants
inline Vec zeros() {
    return _mm256_setzero_si256();
}
inline Vec all8(unsigned value) {
    return _mm256_set1_epi8(static_cast<char>(value));
}
inline Vec all16(unsigned value) {
    return _mm256_set1_epi16(static_cast<short>(value));
}
inline Vec all32(unsigned value) {
    return _mm256_set1_epi32(static_cast<int>(value));
}
inline Vec all64(std::uint64_t value) {
    return _mm256_set1_epi64x(static_cast<long long>(value));
}
inline Vec keptConstant(Vec constant) {
    asm("" : "+x"(constant));
    return constant;
}

// --- parts of 16 bytes
inline Vec repeatedParts(Vec128 part) {
    return _mm256_broadcastsi128_si256(part);
}
template <int index>
inline Vec128 partOf(Vec v) {
    if constexpr (index == 0) return _mm256_castsi256_si128(v);
    return _mm256_extracti128_si256(v, index);
}
template <class PartAt>
inline Vec fromParts(PartAt partAt) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(partAt(0)), partAt(1), 1);
}

// --- bits
inline Vec bitAnd(Vec a, Vec b) {
    return _mm256_and_si256(a, b);
}
inline Vec bitOr(Vec a, Vec b) {
    return _mm256_or_si256(a, b);
}
inline Vec bitXor(Vec a, Vec b) {
    return _mm256_xor_si256(a, b);
}
inline Vec andNot(Vec a, Vec mask) { // a & ~mask
    return _mm256_andnot_si256(mask, a);
}
template <int bits>
inline Vec shiftLeft32(Vec a) {
    return _mm256_slli_epi32(a, bits);
}
template <int bits>
inline Vec shiftRight32(Vec a) {
    return _mm256_srli_epi32(a, bits);
}
template <int bits>
inline Vec shiftRightSigned32(Vec a) {
    return _mm256_srai_epi32(a, bits);
}
template <int bits>
inline Vec shiftLeft16(Vec a) {
    return _mm256_slli_epi16(a, bits);
}
template <int bits>
inline Vec shiftRight16(Vec a) {
    return _mm256_srli_epi16(a, bits);
}
template <int bits>
inline Vec shiftRightSigned16(Vec a) {
    return _mm256_srai_epi16(a, bits);
}
inline Vec shiftedRightSigned32(Vec a, unsigned bits) {
    return _mm256_sra_epi32(a, _mm_cvtsi32_si128(static_cast<int>(bits)));
}
// Towards the end, and towards the front; zeros follow.
template <int bytes>
inline Vec shiftBytesUp(Vec a) {
    return _mm256_slli_si256(a, bytes);
}
template <int bytes>
inline Vec shiftBytesDown(Vec a) {
    return _mm256_srli_si256(a, bytes);
}

// --- arithmetic; lanes are unsigned unless the name says otherwise, and wrap unless it says that they saturate
inline Vec add8(Vec a, Vec b) {
    return _mm256_add_epi8(a, b);
}
inline Vec subtract8(Vec a, Vec b) {
    return _mm256_sub_epi8(a, b);
}
inline Vec addSaturated8(Vec a, Vec b) {
    return _mm256_adds_epu8(a, b);
}
inline Vec subtractSaturated8(Vec a, Vec b) {
    return _mm256_subs_epu8(a, b);
}
inline Vec min8(Vec a, Vec b) {
    return _mm256_min_epu8(a, b);
}
inline Vec averageRoundedUp8(Vec a, Vec b) {
    return _mm256_avg_epu8(a, b);
}
inline Vec add16(Vec a, Vec b) {
    return _mm256_add_epi16(a, b);
}
inline Vec subtract16(Vec a, Vec b) {
    return _mm256_sub_epi16(a, b);
}
inline Vec addSaturated16(Vec a, Vec b) {
    return _mm256_adds_epu16(a, b);
}
inline Vec minSigned16(Vec a, Vec b) {
    return _mm256_min_epi16(a, b);
}
inline Vec maxSigned16(Vec a, Vec b) {
    return _mm256_max_epi16(a, b);
}
// The two halves of each product.
inline Vec multiplyLow16(Vec a, Vec b) {
    return _mm256_mullo_epi16(a, b);
}
inline Vec multiplyHigh16(Vec a, Vec b) {
    return _mm256_mulhi_epu16(a, b);
}
// The sums of the products of signed neighbours, in 32 bits.
inline Vec multiplyAddPairs16(Vec a, Vec b) {
    return _mm256_madd_epi16(a, b);
}
inline Vec add32(Vec a, Vec b) {
    return _mm256_add_epi32(a, b);
}
inline Vec subtract32(Vec a, Vec b) {
    return _mm256_sub_epi32(a, b);
}
inline Vec add64(Vec a, Vec b) {
    return _mm256_add_epi64(a, b);
}
// The sums of eight bytes each, in 64 bits.
inline Vec sumsOf8(Vec a) {
    return _mm256_sad_epu8(a, zeros());
}

// --- products of 64 bits, summed up without carries: of the low halves of two vectors, of the high halves
inline Vec128 carrylessLow(Vec128 a, Vec128 b) {
    return _mm_clmulepi64_si128(a, b, 0x00);
}
inline Vec128 carrylessHigh(Vec128 a, Vec128 b) {
    return _mm_clmulepi64_si128(a, b, 0x11);
}

// --- comparisons: all ones where true
inline Vec equal8(Vec a, Vec b) {
    return _mm256_cmpeq_epi8(a, b);
}
inline Vec equal32(Vec a, Vec b) {
    return _mm256_cmpeq_epi32(a, b);
}
inline Vec equal16(Vec a, Vec b) {
    return _mm256_cmpeq_epi16(a, b);
}
inline Vec greaterSigned16(Vec a, Vec b) {
    return _mm256_cmpgt_epi16(a, b);
}
inline Vec greaterSigned32(Vec a, Vec b) {
    return _mm256_cmpgt_epi32(a, b);
}
// The highest bit of each byte, that of the first byte lowest.
inline std::uint32_t byteMask(Vec a) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(a));
}

// --- lanes
// From the front halves of both (Low) or their rear ones (High), one lane of each by turns.
inline Vec interleaveLow8(Vec a, Vec b) {
    return _mm256_unpacklo_epi8(a, b);
}
inline Vec interleaveHigh8(Vec a, Vec b) {
    return _mm256_unpackhi_epi8(a, b);
}
inline Vec interleaveLow16(Vec a, Vec b) {
    return _mm256_unpacklo_epi16(a, b);
}
inline Vec interleaveHigh16(Vec a, Vec b) {
    return _mm256_unpackhi_epi16(a, b);
}
inline Vec interleaveLow32(Vec a, Vec b) {
    return _mm256_unpacklo_epi32(a, b);
}
inline Vec interleaveHigh32(Vec a, Vec b) {
    return _mm256_unpackhi_epi32(a, b);
}
inline Vec interleaveLow64(Vec a, Vec b) {
    return _mm256_unpacklo_epi64(a, b);
}
inline Vec interleaveHigh64(Vec a, Vec b) {
    return _mm256_unpackhi_epi64(a, b);
}
// Bytes to words.
inline Vec widenLow8(Vec a) {
    return interleaveLow8(a, zeros());
}
inline Vec widenHigh8(Vec a) {
    return interleaveHigh8(a, zeros());
}
// Signed lanes of both to half their width, saturated: to unsigned bytes, signed bytes, signed words.
inline Vec packUnsigned16(Vec low, Vec high) {
    return _mm256_packus_epi16(low, high);
}
inline Vec packSigned16(Vec low, Vec high) {
    return _mm256_packs_epi16(low, high);
}
inline Vec packSigned32(Vec low, Vec high) {
    return _mm256_packs_epi32(low, high);
}

inline Vec select(Vec mask, Vec yes, Vec no) {
    return _mm256_blendv_epi8(no, yes, mask);
}
inline bool allZero(Vec a) {
    return _mm256_testz_si256(a, a) != 0;
}
inline bool noneSet(Vec a, Vec mask) {
    return _mm256_testz_si256(a, mask) != 0;
}
inline bool allSet(Vec a, Vec mask) {
    return _mm256_testc_si256(a, mask) != 0;
}
inline Vec multiplyLow32(Vec a, Vec b) {
    return _mm256_mullo_epi32(a, b);
}
inline Vec runningSums32(Vec v) {
    v = add32(v, shiftBytesUp<4>(v));
    v = add32(v, shiftBytesUp<8>(v));
    const Vec sums = _mm256_shuffle_epi32(v, 0xFF);
    return add32(v, _mm256_permute2x128_si256(sums, sums, 0x08)); // the lower half's sum into the upper half
}

// --- lanes
inline Vec widenUnsigned8(HalfVec v) {
    return _mm256_cvtepu8_epi16(v);
}
inline Vec widenSigned16(HalfVec v) {
    return _mm256_cvtepi16_epi32(v);
}
template <int lane>
inline Vec repeatedInParts32(Vec v) {
    return _mm256_shuffle_epi32(v, lane * 0x55);
}
inline Vec packedInOrder(Vec v) {
    return _mm256_permute4x64_epi64(v, _MM_SHUFFLE(3, 1, 2, 0));
}
// The lanes of 32 bits that stand at `places`. Not a word of the layer: sse2.h has nothing like it.
inline Vec lanesAt(Vec v, Vec places) {
    return _mm256_permutevar8x32_epi32(v, places);
}
// The same goes for these: bytes as lanes of 32 bits, the channels of pairs of pixels by turns, and the sums of the
// products of unsigned bytes and signed ones beside each other.
inline Vec widenedTo32(const std::uint8_t* bytes) {
    return _mm256_cvtepu8_epi32(load64(bytes));
}
inline Vec channelsByTurns(Vec pairs) {
    return _mm256_shuffle_epi8(pairs,
                               repeatedParts(_mm_setr_epi8(0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15)));
}
inline Vec multiplyAddPairs8(Vec bytes, Vec factors) {
    return _mm256_maddubs_epi16(bytes, factors);
}
inline Vec packedTwiceInOrder(Vec v) {
    return lanesAt(v, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}
inline Vec evenFirst32(Vec v) {
    return _mm256_shuffle_epi32(v, _MM_SHUFFLE(3, 1, 2, 0));
}
inline Vec upperHalves(Vec a, Vec b) {
    return _mm256_castps_si256(
        _mm256_shuffle_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), _MM_SHUFFLE(3, 1, 3, 1)));
}
inline Vec fractionsInWords(Vec lanes) {
    return _mm256_shuffle_epi8(
        lanes, repeatedParts(_mm_setr_epi8(3, -1, 3, -1, 3, -1, 3, -1, 11, -1, 11, -1, 11, -1, 11, -1)));
}
inline Vec reversed32(Vec v) {
    return lanesAt(v, _mm256_setr_epi32(7, 6, 5, 4, 3, 2, 1, 0));
}
inline Vec lastInAll32(Vec v) {
    return lanesAt(v, all32(7));
}
template <int bytes>
inline Vec128 shiftBytesUpFrom(Vec128 upper, Vec128 lower) {
    return _mm_alignr_epi8(upper, lower, 16 - bytes);
}
template <int bytes>
inline Vec shiftBytesUpFrom(Vec upper, Vec lower) {
    return _mm256_alignr_epi8(upper, lower, 16 - bytes);
}

// --- single precision
inline VecFloat allFloat(float value) {
    return _mm256_set1_ps(value);
}
inline VecFloat toFloat(Vec a) {
    return _mm256_cvtepi32_ps(a);
}
inline Vec truncated(VecFloat a) {
    return _mm256_cvttps_epi32(a);
}
inline VecFloat add(VecFloat a, VecFloat b) {
    return _mm256_add_ps(a, b);
}
inline VecFloat multiply(VecFloat a, VecFloat b) {
    return _mm256_mul_ps(a, b);
}
inline VecFloat divide(VecFloat a, VecFloat b) {
    return _mm256_div_ps(a, b);
}

// --- pixels of four bytes B, G, R, A
// The same shuffle in both halves; -1 gives a zero byte.
inline Vec shuffled(Vec v, Vec128 order) {
    return _mm256_shuffle_epi8(v, repeatedParts(order));
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
inline Vec whereClear(Vec, Vec alpha, Vec yes, Vec no) {
    return select(equal32(alpha, zeros()), yes, no);
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
    return lanesAt(shuffled(pixels, packing3()), _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
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

// --- the four channels of a pixel in double precision
using Channels = __m256d;
using Weight = __m256d;

struct ChannelPair {
    Channels near, far;
};

// A byte in the lowest place of 2^52 makes that larger by the byte's value. Taking it away again is less work than a
// conversion.
inline Channels channelsAt(const std::uint8_t* p) {
    const __m256d place = _mm256_set1_pd(0x1p52);
    const __m256i bytes = _mm256_cvtepu8_epi64(load32(p));
    return _mm256_sub_pd(_mm256_or_pd(_mm256_castsi256_pd(bytes), place), place);
}
inline ChannelPair channelPairAt(const std::uint8_t* p) {
    return {channelsAt(p), channelsAt(p + 4)};
}
inline Channels channelsAt(const double* p) {
    return _mm256_loadu_pd(p);
}
inline ChannelPair channelPairAt(const double* p) {
    return {channelsAt(p), channelsAt(p + 4)};
}
inline void storeChannels(double* p, Channels a) {
    _mm256_storeu_pd(p, a);
}
inline Weight weightAt(const double* p) {
    return _mm256_broadcast_sd(p);
}
inline Channels multiply(Channels a, Weight b) {
    return _mm256_mul_pd(a, b);
}
inline Channels add(Channels a, Channels b) {
    return _mm256_add_pd(a, b);
}
inline Vec128 truncated(Channels a) {
    return _mm256_cvttpd_epi32(a);
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
