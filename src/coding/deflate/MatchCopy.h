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

// What begins `distance` bytes before `out`, less than 16, again and again, 16 bytes of it. What is read at once does
// not have to wait for bytes that have just been stored.
struct Pattern {
    std::uint64_t low, high;
    std::size_t step; // whole repetitions in it
};

inline Pattern patternBefore(const std::uint8_t* out, std::size_t distance) noexcept {
    const std::uint8_t* const from = out - distance;
    if (distance >= 8) return {loadWord<std::uint64_t>(from), loadWord<std::uint64_t>(from + 8), distance};
    // Factors that repeat a unit of so many bytes, and how many bytes of the last one the first half has.
    static constexpr std::uint64_t copies[8] = {
        0,           0x0101010101010101, 0x0001000100010001, 0x0001000001000001,
        0x100000001, 0x0000010000000001, 0x0001000000000001, 0x0100000000000001};
    static constexpr std::uint8_t parts[8] = {0, 0, 0, 2, 0, 3, 2, 1}, steps[8] = {0, 16, 16, 15, 16, 15, 12, 14};
    const std::uint64_t mask = ~std::uint64_t{0} >> (64 - 8 * distance);
    const std::uint64_t unit = loadWord<std::uint64_t>(from) & mask;
    const std::size_t part = parts[distance];
    const std::uint64_t turned = (unit >> 8 * part | unit << 8 * (distance - part)) & mask;
    return {unit * copies[distance], turned * copies[distance], steps[distance]};
}

inline void copyWide(std::uint8_t* out, std::size_t distance, std::size_t length) noexcept {
    std::uint8_t* const end = out + length;
    // Most matches are short and done after the first round.
    if (distance >= 16) {
        const std::uint8_t* from = out - distance;
        do {
            std::memcpy(out, from, 16);
            std::memcpy(out + 16, from + 16, 16);
            out += 32;
            from += 32;
        } while (out < end);
    } else {
        const Pattern pattern = patternBefore(out, distance);
        do {
            std::memcpy(out, &pattern, 16);
            std::memcpy(out + pattern.step, &pattern, 16);
            out += 2 * pattern.step;
        } while (out < end);
    }
}

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
