// Copies a match: `length` bytes that begin `distance` bytes before `out`, and that may overlap what is being written.
#pragma once
#include "coding/BitReader.h"
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace pixkit::deflate {

// The wide copy may write so many bytes behind the match.
inline constexpr std::size_t copyOverrun = 31;

inline void copyBytes(std::uint8_t* out, std::size_t distance, std::size_t length) noexcept {
    for (; length != 0; --length, ++out)
        *out = *(out - distance);
}

// Repeats a pattern of `Bytes` bytes or fewer: whole stores of it, each beginning `step` bytes after the one before.
template <std::size_t Bytes>
inline void repeat(std::uint8_t* out, const std::uint8_t* end, const void* pattern, std::size_t step) noexcept {
    for (; out < end; out += step)
        std::memcpy(out, pattern, Bytes);
}

inline void copyWide(std::uint8_t* out, std::size_t distance, std::size_t length) noexcept {
    const std::uint8_t* from = out - distance;
    std::uint8_t* const end = out + length;
    if (distance >= 16) {
        // Most matches are short and done after the first round.
        do {
            std::memcpy(out, from, 16);
            std::memcpy(out + 16, from + 16, 16);
            out += 32;
            from += 32;
        } while (out < end);
    } else if (distance >= 8) {
        // The first `distance` bytes of the pattern are right; each store covers what is wrong in the one before.
        // Reading once keeps the processor from waiting for bytes that it has just stored.
        std::uint8_t pattern[16];
        std::memcpy(pattern, from, 16);
        repeat<16>(out, end, pattern, distance);
    } else {
        // The pixel or less before, over and over: eight bytes of whole repetitions and a part of the next.
        static constexpr std::uint64_t copies[8] = {
            0,           0x0101010101010101, 0x0001000100010001, 0x0001000001000001,
            0x100000001, 0x0000010000000001, 0x0001000000000001, 0x0100000000000001};
        static constexpr std::uint8_t steps[8] = {0, 8, 8, 6, 8, 5, 6, 7};
        const std::uint64_t unit = loadWord<std::uint64_t>(from) & (~std::uint64_t{0} >> (64 - 8 * distance));
        const std::uint64_t pattern = unit * copies[distance];
        repeat<8>(out, end, &pattern, steps[distance]);
    }
}

} // namespace pixkit::deflate
