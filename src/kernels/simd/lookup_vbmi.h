// Pixels by their numbers, 64 at a time: a palette of 256 fills sixteen vectors, which shuffles of bytes look up.
#pragma once
#include "kernels/simd/samples.h"

namespace pixkit::kernels {
namespace {

// One of the four bytes of the pixels 64 * part .. 64 * part + 63.
template <int channel, int part>
inline Vec paletteBytes(const std::uint8_t* lut) {
    // No std::array: its members would be compiled for this level and might be what other files get linked to.
    struct Places {
        std::uint8_t bytes[vecBytes];
    };
    alignas(vecBytes) static constexpr Places everyFourth = [] {
        Places places{};
        for (std::size_t i = 0; i < vecBytes; ++i)
            places.bytes[i] = static_cast<std::uint8_t>(4 * i % 128 + channel);
        return places;
    }();
    const Vec places = load(everyFourth.bytes);
    const auto from = [&](std::size_t at) {
        const std::uint8_t* const pixels = lut + 4 * vecBytes * part + at;
        return _mm512_permutex2var_epi8(load(pixels), places, load(pixels + vecBytes));
    };
    return _mm512_mask_blend_epi8(0xFFFFFFFF00000000, from(0), from(2 * vecBytes));
}

struct PaletteChannel {
    Vec part0, part1, part2, part3;

    Vec operator()(Vec numbers, __mmask64 isUpperHalf) const {
        return _mm512_mask_blend_epi8(isUpperHalf, _mm512_permutex2var_epi8(part0, numbers, part1),
                                      _mm512_permutex2var_epi8(part2, numbers, part3));
    }
};
template <int channel>
inline PaletteChannel paletteChannel(const std::uint8_t* lut) {
    return {paletteBytes<channel, 0>(lut), paletteBytes<channel, 1>(lut), paletteBytes<channel, 2>(lut),
            paletteBytes<channel, 3>(lut)};
}

void fromIndex8ByShuffles(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const std::uint8_t* lut) {
    constexpr std::size_t worthSorting = 2 * vecBytes; // pixels that pay for taking the palette apart
    if (count >= worthSorting) {
        const PaletteChannel blue = paletteChannel<0>(lut), green = paletteChannel<1>(lut),
                             red = paletteChannel<2>(lut), alpha = paletteChannel<3>(lut);
        // Interleaving works on parts of 16 bytes: groups of four numbers go to where their pixels come out in order.
        const Vec order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
        for (; count >= vecBytes; count -= vecBytes, dst += 4 * vecBytes, src += vecBytes) {
            const Vec numbers = _mm512_permutexvar_epi32(order, load(src));
            const __mmask64 isUpperHalf = _mm512_movepi8_mask(numbers);
            const Vec b = blue(numbers, isUpperHalf), g = green(numbers, isUpperHalf);
            const Vec r = red(numbers, isUpperHalf), a = alpha(numbers, isUpperHalf);
            const Vec lowBg = _mm512_unpacklo_epi8(b, g), highBg = _mm512_unpackhi_epi8(b, g);
            const Vec lowRa = _mm512_unpacklo_epi8(r, a), highRa = _mm512_unpackhi_epi8(r, a);
            store(dst, interleaveLow16(lowBg, lowRa));
            store(dst + vecBytes, interleaveHigh16(lowBg, lowRa));
            store(dst + 2 * vecBytes, interleaveLow16(highBg, highRa));
            store(dst + 3 * vecBytes, interleaveHigh16(highBg, highRa));
        }
    }
    fromIndex8(dst, src, count, lut);
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
