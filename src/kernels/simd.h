// The vector operations that the row kernels are written with. Every *_simd.h is compiled twice, by its *_sse2.cpp
// (plain SSE2, 16 bytes a vector) and by its *_avx2.cpp (32 bytes a vector, and byte shuffles).
//
// Everything here and in the *_simd.h files has internal linkage, and neither they nor the *_avx2.cpp files include
// headers with inline functions or templates of the standard library: the linker keeps one copy of such a function for
// the whole program, and must not find one that was compiled for AVX2.
#pragma once
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <immintrin.h>

#ifdef __AVX2__
#define PIXKIT_SIMD(operation) _mm256_##operation
#define PIXKIT_SIMD_BITS(operation) _mm256_##operation##_si256
#else
#define PIXKIT_SIMD(operation) _mm_##operation
#define PIXKIT_SIMD_BITS(operation) _mm_##operation##_si128
#endif

namespace pixkit::kernels {
namespace {

#ifdef __AVX2__
using Vec = __m256i;
using VecFloat = __m256;
#else
using Vec = __m128i;
using VecFloat = __m128;
#endif

constexpr std::size_t vecBytes = sizeof(Vec);
constexpr std::size_t vecPixels = vecBytes / 4;

// --- memory, at any alignment
inline Vec load(const std::uint8_t* p) {
    return PIXKIT_SIMD_BITS(loadu)(reinterpret_cast<const Vec*>(p));
}
inline void store(std::uint8_t* p, Vec v) {
    PIXKIT_SIMD_BITS(storeu)(reinterpret_cast<Vec*>(p), v);
}
inline __m128i load128(const std::uint8_t* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
inline void store128(std::uint8_t* p, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v);
}
inline __m128i load64(const std::uint8_t* p) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
}
inline void store64(std::uint8_t* p, __m128i v) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(p), v);
}
inline void store32(std::uint8_t* p, __m128i v) {
    const int low = _mm_cvtsi128_si32(v);
    std::memcpy(p, &low, sizeof low);
}
inline int load32(const std::uint8_t* p) {
    int value = 0;
    std::memcpy(&value, p, sizeof value);
    return value;
}

// --- constants
inline Vec zeros() {
    return PIXKIT_SIMD_BITS(setzero)();
}
inline Vec all8(unsigned value) {
    return PIXKIT_SIMD(set1_epi8)(static_cast<char>(value));
}
inline Vec all16(unsigned value) {
    return PIXKIT_SIMD(set1_epi16)(static_cast<short>(value));
}
inline Vec all32(unsigned value) {
    return PIXKIT_SIMD(set1_epi32)(static_cast<int>(value));
}
inline Vec all64(std::uint64_t value) {
    return PIXKIT_SIMD(set1_epi64x)(static_cast<long long>(value));
}

// The same, but as if it had been read from somewhere: what a loop needs more constants for than there are registers
// then comes from memory, while the compiler would make known values anew in every turn, at several times the cost.
inline Vec opaque(Vec constant) {
    asm("" : "+x"(constant));
    return constant;
}

// --- bits
inline Vec both(Vec a, Vec b) {
    return PIXKIT_SIMD_BITS(and)(a, b);
}
inline Vec either(Vec a, Vec b) {
    return PIXKIT_SIMD_BITS(or)(a, b);
}
inline Vec differing(Vec a, Vec b) {
    return PIXKIT_SIMD_BITS(xor)(a, b);
}
inline Vec without(Vec a, Vec mask) {
    return PIXKIT_SIMD_BITS(andnot)(mask, a);
}
// By bytes; a byte of the mask is all ones or all zeros.
inline Vec select(Vec mask, Vec yes, Vec no) {
#ifdef __AVX2__
    return _mm256_blendv_epi8(no, yes, mask);
#else
    return either(both(mask, yes), without(no, mask));
#endif
}
template <int bits>
inline Vec left32(Vec a) {
    return PIXKIT_SIMD(slli_epi32)(a, bits);
}
template <int bits>
inline Vec right32(Vec a) {
    return PIXKIT_SIMD(srli_epi32)(a, bits);
}
template <int bits>
inline Vec left16(Vec a) {
    return PIXKIT_SIMD(slli_epi16)(a, bits);
}
template <int bits>
inline Vec right16(Vec a) {
    return PIXKIT_SIMD(srli_epi16)(a, bits);
}

// --- arithmetic; "held" saturates
inline Vec add8(Vec a, Vec b) {
    return PIXKIT_SIMD(add_epi8)(a, b);
}
inline Vec addHeld8(Vec a, Vec b) {
    return PIXKIT_SIMD(adds_epu8)(a, b);
}
inline Vec subtractHeld8(Vec a, Vec b) {
    return PIXKIT_SIMD(subs_epu8)(a, b);
}
inline Vec add16(Vec a, Vec b) {
    return PIXKIT_SIMD(add_epi16)(a, b);
}
inline Vec addHeld16(Vec a, Vec b) {
    return PIXKIT_SIMD(adds_epi16)(a, b);
}
inline Vec addHeldUnsigned16(Vec a, Vec b) {
    return PIXKIT_SIMD(adds_epu16)(a, b);
}
inline Vec subtract16(Vec a, Vec b) {
    return PIXKIT_SIMD(sub_epi16)(a, b);
}
inline Vec multiplyLow16(Vec a, Vec b) {
    return PIXKIT_SIMD(mullo_epi16)(a, b);
}
inline Vec multiplyHigh16(Vec a, Vec b) {
    return PIXKIT_SIMD(mulhi_epu16)(a, b);
}
inline Vec multiplyAddPairs16(Vec a, Vec b) {
    return PIXKIT_SIMD(madd_epi16)(a, b);
}
inline Vec add32(Vec a, Vec b) {
    return PIXKIT_SIMD(add_epi32)(a, b);
}
// The low half of each product.
inline Vec multiplyLow32(Vec a, Vec b) {
#ifdef __AVX2__
    return _mm256_mullo_epi32(a, b);
#else
    const Vec even = _mm_mul_epu32(a, b);
    const Vec odd = _mm_mul_epu32(_mm_srli_epi64(a, 32), _mm_srli_epi64(b, 32));
    return _mm_unpacklo_epi32(_mm_shuffle_epi32(even, _MM_SHUFFLE(0, 0, 2, 0)),
                              _mm_shuffle_epi32(odd, _MM_SHUFFLE(0, 0, 2, 0)));
#endif
}
inline Vec subtract32(Vec a, Vec b) {
    return PIXKIT_SIMD(sub_epi32)(a, b);
}
// x / 255 truncated, for words below 65,535: (x + 1) * 257 / 65,536 is that for each of them.
inline Vec dividedBy255(Vec x) {
    return multiplyHigh16(add16(x, all16(1)), all16(257));
}

// --- comparisons: all ones where true
inline Vec equal8(Vec a, Vec b) {
    return PIXKIT_SIMD(cmpeq_epi8)(a, b);
}
inline Vec equal32(Vec a, Vec b) {
    return PIXKIT_SIMD(cmpeq_epi32)(a, b);
}
inline Vec above16(Vec a, Vec b) {
    return PIXKIT_SIMD(cmpgt_epi16)(a, b);
}
inline bool allZero(Vec a) {
#ifdef __AVX2__
    return _mm256_testz_si256(a, a) != 0;
#else
    return _mm_movemask_epi8(equal8(a, zeros())) == 0xFFFF;
#endif
}
// The sum of the 32-bit lanes.
inline std::size_t laneSum32(Vec a) {
    std::uint32_t lanes[vecPixels];
    std::memcpy(lanes, &a, sizeof lanes);
    std::size_t sum = 0;
    for (const std::uint32_t lane : lanes)
        sum += lane;
    return sum;
}

// --- widening and narrowing; with 32-byte vectors both work within each half, so they fit together
inline Vec lowWords(Vec bytes) {
    return PIXKIT_SIMD(unpacklo_epi8)(bytes, zeros());
}
inline Vec highWords(Vec bytes) {
    return PIXKIT_SIMD(unpackhi_epi8)(bytes, zeros());
}
inline Vec bytesOf(Vec low, Vec high) {
    return PIXKIT_SIMD(packus_epi16)(low, high);
}

// --- single precision
inline VecFloat allFloat(float value) {
    return PIXKIT_SIMD(set1_ps)(value);
}
inline VecFloat toFloat(Vec a) {
    return PIXKIT_SIMD(cvtepi32_ps)(a);
}
inline Vec truncated(VecFloat a) {
    return PIXKIT_SIMD(cvttps_epi32)(a);
}
inline VecFloat multiply(VecFloat a, VecFloat b) {
    return PIXKIT_SIMD(mul_ps)(a, b);
}
inline VecFloat divide(VecFloat a, VecFloat b) {
    return PIXKIT_SIMD(div_ps)(a, b);
}

// --- pixels of four bytes B, G, R, A
constexpr unsigned alphaByte = 0xFF000000U;
constexpr unsigned colourBytes = 0x00FFFFFFU;
constexpr std::uint64_t alphaWord = 0x00FF'0000'0000'0000U;

#ifdef __AVX2__
// The same shuffle in both halves; -1 gives a zero byte.
inline Vec shuffled(Vec v, __m128i order) {
    return _mm256_shuffle_epi8(v, _mm256_broadcastsi128_si256(order));
}
#endif

// Each pixel's alpha in all four bytes.
inline Vec alphaInAll(Vec pixels) {
#ifdef __AVX2__
    return shuffled(pixels, _mm_setr_epi8(3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15));
#else
    Vec alpha = right32<24>(pixels);
    alpha = either(alpha, left32<16>(alpha));
    return either(alpha, left32<8>(alpha));
#endif
}

// The same for pixels widened to words.
inline Vec alphaInAllWords(Vec words) {
#ifdef __AVX2__
    return shuffled(words, _mm_setr_epi8(6, 7, 6, 7, 6, 7, 6, 7, 14, 15, 14, 15, 14, 15, 14, 15));
#else
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(words, 0xFF), 0xFF);
#endif
}

inline Vec redBlueSwapped(Vec pixels) {
#ifdef __AVX2__
    return shuffled(pixels, _mm_setr_epi8(2, 1, 0, 3, 6, 5, 4, 7, 10, 9, 8, 11, 14, 13, 12, 15));
#else
    const Vec outer = both(pixels, all32(0x00FF00FF));
    return either(without(pixels, all32(0x00FF00FF)), either(left32<16>(outer), right32<16>(outer)));
#endif
}

// colour * alpha / 255 truncated. The alpha word is multiplied by 255 and so stays as it is.
inline Vec premultipliedWords(Vec words) {
    return dividedBy255(multiplyLow16(words, either(alphaInAllWords(words), all64(alphaWord))));
}
inline Vec premultiplied(Vec pixels) {
    return bytesOf(premultipliedWords(lowWords(pixels)), premultipliedWords(highWords(pixels)));
}

// Puts three bytes of each four-byte pixel together at the front; what follows them is unspecified.
inline Vec packed3(Vec pixels) {
#ifdef __AVX2__
    const Vec halves = shuffled(pixels, _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
    return _mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
#else
    const Vec first = both(pixels, all64(0x0000'0000'00FF'FFFFU));
    const Vec second = both(_mm_srli_epi64(pixels, 8), all64(0x0000'FFFF'FF00'0000U));
    const Vec pairs = either(first, second); // six bytes in each half
    return either(_mm_move_epi64(pairs), _mm_slli_si128(_mm_srli_si128(pairs, 8), 6));
#endif
}

} // namespace
} // namespace pixkit::kernels
