// Vector kernels that turn PNG samples into premultiplied pixels.
#pragma once
#include "kernels/expand3_simd.h"
#include "kernels/scalar.h"

namespace pixkit::kernels {
namespace {

// The high bytes (the first ones, 16-bit samples being big-endian) of the samples in two vectors.
Vec highBytes(const std::uint8_t* src) {
    const Vec bytes = bytesOf(both(load(src), all16(0xFF)), both(load(src + vecBytes), all16(0xFF)));
#ifdef __AVX2__
    return _mm256_permute4x64_epi64(bytes, _MM_SHUFFLE(3, 1, 2, 0));
#else
    return bytes;
#endif
}

// Two vectors of pixels from words that hold their B, G and their R, A.
void storeInterleaved(std::uint8_t* dst, Vec blueGreen, Vec redAlpha) {
    const Vec low = PIXKIT_SIMD(unpacklo_epi16)(blueGreen, redAlpha);
    const Vec high = PIXKIT_SIMD(unpackhi_epi16)(blueGreen, redAlpha);
#ifdef __AVX2__
    store(dst, _mm256_permute2x128_si256(low, high, 0x20));
    store(dst + vecBytes, _mm256_permute2x128_si256(low, high, 0x31));
#else
    store(dst, low);
    store(dst + vecBytes, high);
#endif
}

// Two vectors of pixels from one of gray, alpha pairs.
void storeGrayAlpha(std::uint8_t* dst, Vec pairs) {
    const Vec gray = both(pairs, all16(0xFF));
    const Vec alpha = right16<8>(pairs);
    const Vec colour = dividedBy255(multiplyLow16(gray, alpha));
    storeInterleaved(dst, either(colour, left16<8>(colour)), either(colour, left16<8>(alpha)));
}

void fromRgb8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; 3 * count >= expand3Reads; count -= vecPixels, dst += vecBytes, src += 3 * vecPixels)
        store(dst, either(redBlueSwapped(expanded3(src)), all32(alphaByte)));
    scalar::fromRgb8(dst, src, count);
}

void fromRgba8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += vecBytes)
        store(dst, premultiplied(redBlueSwapped(load(src))));
    scalar::fromRgba8(dst, src, count);
}

void fromGrayAlpha8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= 2 * vecPixels; count -= 2 * vecPixels, dst += 2 * vecBytes, src += vecBytes)
        storeGrayAlpha(dst, load(src));
    scalar::fromGrayAlpha8(dst, src, count);
}

// Four looked-up pixels for one store. A gather instruction takes half as long again.
void fromIndex8(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* lut) {
    const auto pixel = [lut](std::uint8_t index) { return _mm_cvtsi32_si128(load32(lut + std::size_t{4} * index)); };
    for (; count >= 4; count -= 4, dst += 16, src += 4) {
        const __m128i first = _mm_unpacklo_epi32(pixel(src[0]), pixel(src[1]));
        const __m128i second = _mm_unpacklo_epi32(pixel(src[2]), pixel(src[3]));
        store128(dst, _mm_unpacklo_epi64(first, second));
    }
    scalar::fromIndex8(dst, src, count, lut);
}

void fromGray16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= 2 * vecPixels; count -= 2 * vecPixels, dst += 2 * vecBytes, src += vecBytes) {
        const Vec gray = both(load(src), all16(0xFF));
        storeInterleaved(dst, either(gray, left16<8>(gray)), either(gray, all16(0xFF00)));
    }
    scalar::fromGray16(dst, src, count);
}

// The first four pixels of three samples in 24 bytes, as lanes of R, G, B, 0.
__m128i highBytes3(const std::uint8_t* src) {
    const __m128i mask = _mm_set1_epi16(0xFF);
    return spread3(_mm_packus_epi16(_mm_and_si128(load128(src), mask), _mm_and_si128(load64(src + 16), mask)));
}

void fromRgb16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += 6 * vecPixels) {
#ifdef __AVX2__
        const Vec rgb = _mm256_inserti128_si256(_mm256_castsi128_si256(highBytes3(src)), highBytes3(src + 24), 1);
#else
        const Vec rgb = highBytes3(src);
#endif
        store(dst, either(redBlueSwapped(rgb), all32(alphaByte)));
    }
    scalar::fromRgb16(dst, src, count);
}

void fromRgba16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= vecPixels; count -= vecPixels, dst += vecBytes, src += 2 * vecBytes)
        store(dst, premultiplied(redBlueSwapped(highBytes(src))));
    scalar::fromRgba16(dst, src, count);
}

void fromGrayAlpha16(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    for (; count >= 2 * vecPixels; count -= 2 * vecPixels, dst += 2 * vecBytes, src += 2 * vecBytes)
        storeGrayAlpha(dst, highBytes(src));
    scalar::fromGrayAlpha16(dst, src, count);
}

// --- small samples: each byte of samples of 2 * depth bits becomes two, until they are single
template <int depth>
__m128i halves(__m128i v, bool last) {
    const __m128i mask = _mm_set1_epi8((1 << depth) - 1);
    const __m128i first = _mm_and_si128(_mm_srli_epi16(v, depth), mask);
    const __m128i second = _mm_and_si128(v, mask);
    return last ? _mm_unpackhi_epi8(first, second) : _mm_unpacklo_epi8(first, second);
}

template <int depth, int held = 8>
void storeSamples(std::uint8_t* dst, __m128i v) {
    if constexpr (held == depth) {
        store128(dst, v);
    } else {
        storeSamples<depth, held / 2>(dst, halves<held / 2>(v, false));
        storeSamples<depth, held / 2>(dst + 16 * (held / 2 / depth), halves<held / 2>(v, true));
    }
}

template <int depth>
void unpackAs(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) {
    constexpr std::size_t perBlock = 16 * 8 / depth;
    for (; count >= perBlock; count -= perBlock, dst += perBlock, src += 16)
        storeSamples<depth>(dst, load128(src));
    scalar::unpackSamples(dst, src, count, depth);
}

void unpackSamples(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, unsigned depth) {
    switch (depth) {
    case 1:
        return unpackAs<1>(dst, src, count);
    case 2:
        return unpackAs<2>(dst, src, count);
    default:
        return unpackAs<4>(dst, src, count);
    }
}

void useSamples(Table& table) {
    table.fromRgb8 = fromRgb8;
    table.fromRgba8 = fromRgba8;
    table.fromGrayAlpha8 = fromGrayAlpha8;
    table.fromIndex8 = fromIndex8;
    table.fromGray16 = fromGray16;
    table.fromRgb16 = fromRgb16;
    table.fromRgba16 = fromRgba16;
    table.fromGrayAlpha16 = fromGrayAlpha16;
    table.unpackSamples = unpackSamples;
}

} // namespace
} // namespace pixkit::kernels
