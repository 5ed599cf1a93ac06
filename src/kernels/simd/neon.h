// The vector layer for NEON, as every 64-bit ARM processor has it: vectors of 16 bytes, and shuffles of bytes. sse2.h
// says what a layer is; x86_128.h and vec_128.h, what the words mean.
#pragma once
#include <arm_neon.h>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace pixkit::kernels {
namespace {

using Vec128 = uint8x16_t;
using VecFloat = float32x4_t;

// --- the same bits as lanes of another kind, and back
inline uint16x8_t as16(Vec128 a) {
    return vreinterpretq_u16_u8(a);
}
inline uint32x4_t as32(Vec128 a) {
    return vreinterpretq_u32_u8(a);
}
inline uint64x2_t as64(Vec128 a) {
    return vreinterpretq_u64_u8(a);
}
inline int16x8_t asSigned16(Vec128 a) {
    return vreinterpretq_s16_u8(a);
}
inline int32x4_t asSigned32(Vec128 a) {
    return vreinterpretq_s32_u8(a);
}
inline Vec128 asBytes(int8x16_t a) {
    return vreinterpretq_u8_s8(a);
}
inline Vec128 asBytes(uint16x8_t a) {
    return vreinterpretq_u8_u16(a);
}
inline Vec128 asBytes(int16x8_t a) {
    return vreinterpretq_u8_s16(a);
}
inline Vec128 asBytes(uint32x4_t a) {
    return vreinterpretq_u8_u32(a);
}
inline Vec128 asBytes(int32x4_t a) {
    return vreinterpretq_u8_s32(a);
}
inline Vec128 asBytes(uint64x2_t a) {
    return vreinterpretq_u8_u64(a);
}

// --- memory
inline Vec128 load128(const std::uint8_t* p) {
    return vld1q_u8(p);
}
inline Vec128 load64(const std::uint8_t* p) {
    return vcombine_u8(vld1_u8(p), vdup_n_u8(0));
}
inline Vec128 load64Twice(const std::uint8_t* p, const std::uint8_t* q) {
    return vcombine_u8(vld1_u8(p), vld1_u8(q));
}
inline Vec128 load32(const std::uint8_t* p) {
    std::uint32_t value = 0;
    std::memcpy(&value, p, sizeof value);
    return asBytes(vsetq_lane_u32(value, vdupq_n_u32(0), 0));
}
inline void store128(std::uint8_t* p, Vec128 v) {
    vst1q_u8(p, v);
}
inline void store64(std::uint8_t* p, Vec128 v) {
    vst1_u8(p, vget_low_u8(v));
}
inline void store32(std::uint8_t* p, Vec128 v) {
    const std::uint32_t low = vgetq_lane_u32(as32(v), 0);
    std::memcpy(p, &low, sizeof low);
}

// --- constants
inline Vec128 zeros128() {
    return vdupq_n_u8(0);
}
inline Vec128 all8In128(unsigned value) {
    return vdupq_n_u8(static_cast<std::uint8_t>(value));
}
inline Vec128 all16In128(unsigned value) {
    return asBytes(vdupq_n_u16(static_cast<std::uint16_t>(value)));
}
inline Vec128 all32In128(unsigned value) {
    return asBytes(vdupq_n_u32(value));
}
inline Vec128 all64(std::uint64_t value) {
    return asBytes(vdupq_n_u64(value));
}
inline Vec128 keptConstant(Vec128 constant) {
    asm("" : "+w"(constant));
    return constant;
}

// --- bits
inline Vec128 bitAnd(Vec128 a, Vec128 b) {
    return vandq_u8(a, b);
}
inline Vec128 bitOr(Vec128 a, Vec128 b) {
    return vorrq_u8(a, b);
}
inline Vec128 bitXor(Vec128 a, Vec128 b) {
    return veorq_u8(a, b);
}
inline Vec128 andNot(Vec128 a, Vec128 mask) {
    return vbicq_u8(a, mask);
}
inline Vec128 select(Vec128 mask, Vec128 yes, Vec128 no) {
    return vbslq_u8(mask, yes, no);
}
inline bool allZero(Vec128 a) {
    return vmaxvq_u32(as32(a)) == 0;
}
inline bool noneSet(Vec128 a, Vec128 mask) {
    return allZero(bitAnd(a, mask));
}
inline bool allSet(Vec128 a, Vec128 mask) {
    return allZero(andNot(mask, a));
}
template <int bits>
inline Vec128 shiftLeft32(Vec128 a) {
    return asBytes(vshlq_n_u32(as32(a), bits));
}
template <int bits>
inline Vec128 shiftRight32(Vec128 a) {
    return asBytes(vshrq_n_u32(as32(a), bits));
}
template <int bits>
inline Vec128 shiftRightSigned32(Vec128 a) {
    return asBytes(vshrq_n_s32(asSigned32(a), bits));
}
template <int bits>
inline Vec128 shiftLeft16(Vec128 a) {
    return asBytes(vshlq_n_u16(as16(a), bits));
}
template <int bits>
inline Vec128 shiftRight16(Vec128 a) {
    return asBytes(vshrq_n_u16(as16(a), bits));
}
template <int bits>
inline Vec128 shiftRightSigned16(Vec128 a) {
    return asBytes(vshrq_n_s16(asSigned16(a), bits));
}
inline Vec128 shiftedRightSigned32(Vec128 a, unsigned bits) {
    return asBytes(vshlq_s32(asSigned32(a), vdupq_n_s32(-static_cast<int>(bits))));
}
template <int bytes>
inline Vec128 shiftBytesUpFrom(Vec128 upper, Vec128 lower) {
    return vextq_u8(lower, upper, 16 - bytes);
}
template <int bytes>
inline Vec128 shiftBytesUp(Vec128 a) {
    return shiftBytesUpFrom<bytes>(a, zeros128());
}
template <int bytes>
inline Vec128 shiftBytesDown(Vec128 a) {
    return vextq_u8(a, zeros128(), bytes);
}

// --- arithmetic
inline Vec128 add8(Vec128 a, Vec128 b) {
    return vaddq_u8(a, b);
}
inline Vec128 subtract8(Vec128 a, Vec128 b) {
    return vsubq_u8(a, b);
}
inline Vec128 addSaturated8(Vec128 a, Vec128 b) {
    return vqaddq_u8(a, b);
}
inline Vec128 subtractSaturated8(Vec128 a, Vec128 b) {
    return vqsubq_u8(a, b);
}
inline Vec128 min8(Vec128 a, Vec128 b) {
    return vminq_u8(a, b);
}
inline Vec128 averageRoundedUp8(Vec128 a, Vec128 b) {
    return vrhaddq_u8(a, b);
}
inline Vec128 add16(Vec128 a, Vec128 b) {
    return asBytes(vaddq_u16(as16(a), as16(b)));
}
inline Vec128 subtract16(Vec128 a, Vec128 b) {
    return asBytes(vsubq_u16(as16(a), as16(b)));
}
inline Vec128 addSaturated16(Vec128 a, Vec128 b) {
    return asBytes(vqaddq_u16(as16(a), as16(b)));
}
inline Vec128 minSigned16(Vec128 a, Vec128 b) {
    return asBytes(vminq_s16(asSigned16(a), asSigned16(b)));
}
inline Vec128 maxSigned16(Vec128 a, Vec128 b) {
    return asBytes(vmaxq_s16(asSigned16(a), asSigned16(b)));
}
inline Vec128 multiplyLow16(Vec128 a, Vec128 b) {
    return asBytes(vmulq_u16(as16(a), as16(b)));
}
inline Vec128 multiplyHigh16(Vec128 a, Vec128 b) {
    const uint32x4_t low = vmull_u16(vget_low_u16(as16(a)), vget_low_u16(as16(b)));
    const uint32x4_t high = vmull_high_u16(as16(a), as16(b));
    return asBytes(vuzp2q_u16(vreinterpretq_u16_u32(low), vreinterpretq_u16_u32(high)));
}
inline Vec128 multiplyAddPairs16(Vec128 a, Vec128 b) {
    const int32x4_t low = vmull_s16(vget_low_s16(asSigned16(a)), vget_low_s16(asSigned16(b)));
    return asBytes(vpaddq_s32(low, vmull_high_s16(asSigned16(a), asSigned16(b))));
}
inline Vec128 add32(Vec128 a, Vec128 b) {
    return asBytes(vaddq_u32(as32(a), as32(b)));
}
inline Vec128 subtract32(Vec128 a, Vec128 b) {
    return asBytes(vsubq_u32(as32(a), as32(b)));
}
inline Vec128 multiplyLow32(Vec128 a, Vec128 b) {
    return asBytes(vmulq_u32(as32(a), as32(b)));
}
inline Vec128 add64(Vec128 a, Vec128 b) {
    return asBytes(vaddq_u64(as64(a), as64(b)));
}
inline Vec128 sumsOf8(Vec128 a) {
    return asBytes(vpaddlq_u32(vpaddlq_u16(vpaddlq_u8(a))));
}

// --- comparisons
inline Vec128 equal8(Vec128 a, Vec128 b) {
    return vceqq_u8(a, b);
}
inline Vec128 equal16(Vec128 a, Vec128 b) {
    return asBytes(vceqq_u16(as16(a), as16(b)));
}
inline Vec128 equal32(Vec128 a, Vec128 b) {
    return asBytes(vceqq_u32(as32(a), as32(b)));
}
inline Vec128 greaterSigned16(Vec128 a, Vec128 b) {
    return asBytes(vcgtq_s16(asSigned16(a), asSigned16(b)));
}
inline std::uint32_t byteMask(Vec128 a) {
    constexpr Vec128 places = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    const Vec128 bits = vandq_u8(asBytes(vshrq_n_s8(vreinterpretq_s8_u8(a), 7)), places);
    const std::uint32_t low = vaddv_u8(vget_low_u8(bits));
    return low | std::uint32_t{vaddv_u8(vget_high_u8(bits))} << 8;
}

// --- lanes
inline Vec128 interleaveLow8(Vec128 a, Vec128 b) {
    return vzip1q_u8(a, b);
}
inline Vec128 interleaveHigh8(Vec128 a, Vec128 b) {
    return vzip2q_u8(a, b);
}
inline Vec128 interleaveLow16(Vec128 a, Vec128 b) {
    return asBytes(vzip1q_u16(as16(a), as16(b)));
}
inline Vec128 interleaveHigh16(Vec128 a, Vec128 b) {
    return asBytes(vzip2q_u16(as16(a), as16(b)));
}
inline Vec128 interleaveLow32(Vec128 a, Vec128 b) {
    return asBytes(vzip1q_u32(as32(a), as32(b)));
}
inline Vec128 interleaveHigh32(Vec128 a, Vec128 b) {
    return asBytes(vzip2q_u32(as32(a), as32(b)));
}
inline Vec128 interleaveLow64(Vec128 a, Vec128 b) {
    return asBytes(vzip1q_u64(as64(a), as64(b)));
}
inline Vec128 interleaveHigh64(Vec128 a, Vec128 b) {
    return asBytes(vzip2q_u64(as64(a), as64(b)));
}
inline Vec128 widenLow8(Vec128 a) {
    return asBytes(vmovl_u8(vget_low_u8(a)));
}
inline Vec128 widenHigh8(Vec128 a) {
    return asBytes(vmovl_high_u8(a));
}
inline Vec128 widenSigned16(Vec128 a) {
    return asBytes(vmovl_s16(vget_low_s16(asSigned16(a))));
}
inline Vec128 packUnsigned16(Vec128 low, Vec128 high) {
    return vqmovun_high_s16(vqmovun_s16(asSigned16(low)), asSigned16(high));
}
inline Vec128 packSigned16(Vec128 low, Vec128 high) {
    return asBytes(vqmovn_high_s16(vqmovn_s16(asSigned16(low)), asSigned16(high)));
}
inline Vec128 packSigned32(Vec128 low, Vec128 high) {
    return asBytes(vqmovn_high_s32(vqmovn_s32(asSigned32(low)), asSigned32(high)));
}
inline Vec128 upperWordInBoth(Vec128 a) {
    return asBytes(vtrn2q_u16(as16(a), as16(a)));
}
template <int lane>
inline Vec128 repeated32(Vec128 a) {
    return asBytes(vdupq_laneq_u32(as32(a), lane));
}
template <int bytes>
inline Vec128 lastRepeated(Vec128 a) {
    if (bytes == 1) return vdupq_laneq_u8(a, 15);
    if (bytes == 2) return asBytes(vdupq_laneq_u16(as16(a), 7));
    if (bytes == 4) return repeated32<3>(a);
    return interleaveHigh64(a, a);
}
inline Vec128 reversed32(Vec128 a) {
    const Vec128 halves = asBytes(vrev64q_u32(as32(a)));
    return vextq_u8(halves, halves, 8);
}
inline Vec128 upperHalves(Vec128 a, Vec128 b) {
    return asBytes(vuzp2q_u32(as32(a), as32(b)));
}

// --- shuffles: the bytes at these places; a place that is not there, such as 255, gives 0
inline Vec128 evenFirst32(Vec128 a) {
    return vqtbl1q_u8(a, Vec128{0, 1, 2, 3, 8, 9, 10, 11, 4, 5, 6, 7, 12, 13, 14, 15});
}
inline Vec128 fractionsInWords(Vec128 lanes) {
    return vqtbl1q_u8(lanes, Vec128{3, 255, 3, 255, 3, 255, 3, 255, 11, 255, 11, 255, 11, 255, 11, 255});
}
inline Vec128 alphaInAll(Vec128 pixels) {
    return vqtbl1q_u8(pixels, Vec128{3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15});
}
inline Vec128 alphaInAllWords(Vec128 words) {
    return vqtbl1q_u8(words, Vec128{6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15});
}
inline Vec128 lowInColours(Vec128 lanes) {
    return vqtbl1q_u8(lanes, Vec128{0, 0, 0, 255, 4, 4, 4, 255, 8, 8, 8, 255, 12, 12, 12, 255});
}
inline Vec128 highInColours(Vec128 lanes) {
    return vqtbl1q_u8(lanes, Vec128{3, 3, 3, 255, 7, 7, 7, 255, 11, 11, 11, 255, 15, 15, 15, 255});
}
inline Vec128 redBlueSwapped(Vec128 pixels) {
    return vqtbl1q_u8(pixels, Vec128{2, 1, 0, 3, 6, 5, 4, 7, 10, 9, 8, 11, 14, 13, 12, 15});
}
inline Vec128 packed3(Vec128 pixels) {
    return vqtbl1q_u8(pixels, Vec128{0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 255, 255, 255, 255});
}
inline Vec128 spread3(Vec128 v) {
    return vqtbl1q_u8(v, Vec128{0, 1, 2, 255, 3, 4, 5, 255, 6, 7, 8, 255, 9, 10, 11, 255});
}
inline Vec128 packed6(Vec128 v) {
    return vqtbl1q_u8(v, Vec128{0, 1, 2, 3, 4, 5, 8, 9, 10, 11, 12, 13, 255, 255, 255, 255});
}
inline Vec128 whereClear(Vec128, Vec128 alpha, Vec128 yes, Vec128 no) {
    return select(equal32(alpha, zeros128()), yes, no);
}

// --- single precision
inline VecFloat allFloat(float value) {
    return vdupq_n_f32(value);
}
inline VecFloat toFloat(Vec128 a) {
    return vcvtq_f32_s32(asSigned32(a));
}
inline Vec128 truncated(VecFloat a) {
    return asBytes(vcvtq_s32_f32(a));
}
inline VecFloat add(VecFloat a, VecFloat b) {
    return vaddq_f32(a, b);
}
inline VecFloat multiply(VecFloat a, VecFloat b) {
    return vmulq_f32(a, b);
}
inline VecFloat divide(VecFloat a, VecFloat b) {
    return vdivq_f32(a, b);
}

// --- the four channels of a pixel in double precision
struct Channels {
    float64x2_t low, high;
};
using Weight = float64x2_t;

struct ChannelPair {
    Channels near, far;
};

inline Channels channelsOf(uint16x4_t words) {
    const uint32x4_t numbers = vmovl_u16(words);
    return {vcvtq_f64_u64(vmovl_u32(vget_low_u32(numbers))), vcvtq_f64_u64(vmovl_high_u32(numbers))};
}
inline ChannelPair channelPairAt(const std::uint8_t* p) {
    const uint16x8_t words = vmovl_u8(vld1_u8(p));
    return {channelsOf(vget_low_u16(words)), channelsOf(vget_high_u16(words))};
}
inline Channels channelsAt(const std::uint8_t* p) {
    return channelsOf(vget_low_u16(as16(widenLow8(load32(p)))));
}
inline Channels channelsAt(const double* p) {
    return {vld1q_f64(p), vld1q_f64(p + 2)};
}
inline ChannelPair channelPairAt(const double* p) {
    return {channelsAt(p), channelsAt(p + 4)};
}
inline void storeChannels(double* p, Channels a) {
    vst1q_f64(p, a.low);
    vst1q_f64(p + 2, a.high);
}
inline Weight weightAt(const double* p) {
    return vdupq_n_f64(*p);
}
inline Weight multiply(Weight a, Weight b) {
    return vmulq_f64(a, b);
}
inline Channels multiply(Channels a, Weight weight) {
    return {vmulq_f64(a.low, weight), vmulq_f64(a.high, weight)};
}
inline Channels add(Channels a, Channels b) {
    return {vaddq_f64(a.low, b.low), vaddq_f64(a.high, b.high)};
}
inline Vec128 truncated(Channels a) {
    const int64x2_t low = vcvtq_s64_f64(a.low), high = vcvtq_s64_f64(a.high);
    return asBytes(vuzp1q_s32(vreinterpretq_s32_s64(low), vreinterpretq_s32_s64(high)));
}

} // namespace
} // namespace pixkit::kernels

#include "kernels/simd/vec_128.h"
// SPDX-License-Identifier: MIT
