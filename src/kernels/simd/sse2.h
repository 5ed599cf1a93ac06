// The vector layer for SSE2: vectors of 16 bytes.
//
// Kernels are written with the words of this layer alone. A header for another instruction set offers the same words;
// a unit of its own (such as sse2.cpp) includes it, and then the kernels. Vec is the widest vector of the set, Vec128
// one of 16 bytes, HalfVec holds half as many bytes as Vec does. Whatever interleaves, widens, packs or shifts bytes
// works within each 16 bytes of a vector, so that these operations fit together.
//
// Everything here and in the kernels has internal linkage, and no unit includes headers with inline functions or
// templates of the standard library: the linker keeps one copy of such a function for the whole program, and must not
// find one that was compiled for a processor that not everybody has. scripts/simd_symbols.sh checks that.
#pragma once
#include "kernels/simd/x86_128.h"

#include "kernels/simd/vec_128.h"

namespace pixkit::kernels {
namespace {

using VecFloat = __m128;

// --- constants
inline Vec all64(std::uint64_t value) {
    return _mm_set1_epi64x(static_cast<long long>(value));
}
// The same value, but the compiler no longer knows it. A loop that needs more constants than there are registers then
// reads them from memory; known ones the compiler makes anew in every turn, at several times the cost.
inline Vec keptConstant(Vec constant) {
    asm("" : "+x"(constant));
    return constant;
}

// --- bits
// By bytes; a byte of the mask is all ones or all zeros.
inline Vec select(Vec mask, Vec yes, Vec no) {
    return bitOr(bitAnd(mask, yes), andNot(no, mask));
}
inline bool allZero(Vec a) {
    return byteMask(equal8(a, zeros())) == 0xFFFF;
}
inline bool noneSet(Vec a, Vec mask) {
    return allZero(bitAnd(a, mask));
}
inline bool allSet(Vec a, Vec mask) {
    return allZero(andNot(mask, a));
}

// --- arithmetic
// The low half of each product.
inline Vec multiplyLow32(Vec a, Vec b) {
    const Vec even = _mm_mul_epu32(a, b);
    const Vec odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32));
    return interleaveLow32(_mm_shuffle_epi32(even, _MM_SHUFFLE(0, 0, 2, 0)),
                           _mm_shuffle_epi32(odd, _MM_SHUFFLE(0, 0, 2, 0)));
}

// --- lanes
inline Vec widenSigned16(HalfVec v) {
    return shiftRightSigned32<16>(interleaveLow16(v, v));
}
// Of every four lanes first those with an even number.
inline Vec evenFirst32(Vec v) {
    return _mm_shuffle_epi32(v, _MM_SHUFFLE(3, 1, 2, 0));
}
// The upper halves of the 64-bit lanes of both, in each part.
inline Vec upperHalves(Vec a, Vec b) {
    return _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), _MM_SHUFFLE(3, 1, 3, 1)));
}
// Bits 24 to 31 of each 64-bit lane in all of its four words.
inline Vec fractionsInWords(Vec lanes) {
    const Vec low = shiftRight32<24>(lanes);
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(low, 0), 0);
}
inline Vec reversed32(Vec v) {
    return _mm_shuffle_epi32(v, _MM_SHUFFLE(0, 1, 2, 3));
}
// `upper` moved up by so many bytes, with the last ones of `lower` in front.
template <int bytes>
inline Vec128 shiftBytesUpFrom(Vec128 upper, Vec128 lower) {
    return bitOr(shiftBytesUp<bytes>(upper), shiftBytesDown<16 - bytes>(lower));
}

// --- single precision
inline VecFloat allFloat(float value) {
    return _mm_set1_ps(value);
}
inline VecFloat toFloat(Vec a) {
    return _mm_cvtepi32_ps(a);
}
inline Vec truncated(VecFloat a) {
    return _mm_cvttps_epi32(a);
}
inline VecFloat add(VecFloat a, VecFloat b) {
    return _mm_add_ps(a, b);
}
inline VecFloat multiply(VecFloat a, VecFloat b) {
    return _mm_mul_ps(a, b);
}
inline VecFloat divide(VecFloat a, VecFloat b) {
    return _mm_div_ps(a, b);
}

// --- pixels of four bytes B, G, R, A
// Each pixel's alpha in all four bytes.
inline Vec alphaInAll(Vec pixels) {
    Vec alpha = shiftRight32<24>(pixels);
    alpha = bitOr(alpha, shiftLeft32<16>(alpha));
    return bitOr(alpha, shiftLeft32<8>(alpha));
}
// The same for pixels widened to words.
inline Vec alphaInAllWords(Vec words) {
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(words, 0xFF), 0xFF);
}
// The low byte of each lane in its three colours, 0 in its alpha.
inline Vec lowInColours(Vec lanes) {
    lanes = bitAnd(lanes, all32(0xFF));
    return bitOr(bitOr(lanes, shiftLeft32<8>(lanes)), shiftLeft32<16>(lanes));
}
// `yes` where pixels are clear; `alpha` has lanes that are 0 there and nowhere else.
inline Vec whereClear(Vec, Vec alpha, Vec yes, Vec no) {
    return select(equal32(alpha, zeros()), yes, no);
}
// As lowInColours, of the highest byte of each lane.
inline Vec highInColours(Vec lanes) {
    return lowInColours(shiftRight32<24>(lanes));
}
inline Vec redBlueSwapped(Vec pixels) {
    const Vec outer = bitAnd(pixels, all32(0x00FF00FF));
    return bitOr(andNot(pixels, all32(0x00FF00FF)), bitOr(shiftLeft32<16>(outer), shiftRight32<16>(outer)));
}
// Puts three bytes of each four-byte pixel together at the front; what follows them is unspecified.
inline Vec packed3(Vec pixels) {
    const Vec first = bitAnd(pixels, all64(0x0000'0000'00FF'FFFFU));
    const Vec second = bitAnd(_mm_srli_epi64(pixels, 8), all64(0x0000'FFFF'FF00'0000U));
    const Vec pairs = bitOr(first, second); // six bytes in each half
    return bitOr(_mm_move_epi64(pairs), shiftBytesUp<6>(shiftBytesDown<8>(pairs)));
}
// The first four pixels of three bytes in each 16 bytes, each at the start of a lane of four; the fourth byte is 0.
inline Vec spread3(Vec v) {
    const Vec pairs = interleaveLow64(v, shiftBytesDown<6>(v));
    const Vec first = bitAnd(pairs, all64(0x0000'0000'00FF'FFFFU));
    const Vec second = bitAnd(_mm_slli_epi64(pairs, 8), all64(0x00FF'FFFF'0000'0000U));
    return bitOr(first, second);
}

// --- the four channels of a pixel in double precision
struct Channels {
    __m128d low, high;
};
using Weight = __m128d; // one number for all channels

// A pixel and the one behind it.
struct ChannelPair {
    Channels near, far;
};

inline Channels channelsOf(Vec128 numbers) {
    return {_mm_cvtepi32_pd(numbers), _mm_cvtepi32_pd(interleaveHigh64(numbers, numbers))};
}
inline ChannelPair channelPairOf(Vec128 words) {
    return {channelsOf(interleaveLow16(words, zeros())), channelsOf(interleaveHigh16(words, zeros()))};
}
inline Channels channelsAt(const std::uint8_t* p) {
    return channelPairOf(widenLow8(load32(p))).near;
}
inline ChannelPair channelPairAt(const std::uint8_t* p) {
    return channelPairOf(widenLow8(load64(p)));
}
inline Channels channelsAt(const double* p) {
    return {_mm_loadu_pd(p), _mm_loadu_pd(p + 2)};
}
inline ChannelPair channelPairAt(const double* p) {
    return {channelsAt(p), channelsAt(p + 4)};
}
inline void storeChannels(double* p, Channels a) {
    _mm_storeu_pd(p, a.low);
    _mm_storeu_pd(p + 2, a.high);
}
inline Weight weightAt(const double* p) {
    return _mm_set1_pd(*p);
}
inline Weight multiply(Weight a, Weight b) {
    return _mm_mul_pd(a, b);
}
inline Channels multiply(Channels a, Weight weight) {
    return {_mm_mul_pd(a.low, weight), _mm_mul_pd(a.high, weight)};
}
inline Channels add(Channels a, Channels b) {
    return {_mm_add_pd(a.low, b.low), _mm_add_pd(a.high, b.high)};
}
inline Vec128 truncated(Channels a) {
    return interleaveLow64(_mm_cvttpd_epi32(a.low), _mm_cvttpd_epi32(a.high));
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
