// Vector kernel for the checksum of PNG chunks, for sets that multiply without carries (`carrylessLow`,
// `carrylessHigh`).
#pragma once
#include "kernels/simd/pixels.h"

#include <cstring>

namespace pixkit::kernels {
namespace {

// x^exponent modulo the CRC's polynomial, both with the highest power in the lowest bit, and one place up: products of
// such numbers come out a place too low.
constexpr std::uint64_t powerInCrc(unsigned exponent) {
    std::uint32_t power = 0x80000000;
    for (; exponent != 0; --exponent)
        power = (power & 1) != 0 ? 0xEDB88320U ^ (power >> 1) : power >> 1;
    return std::uint64_t{power} << 1;
}

// What 16 bytes count as `bytes` later: their first half stands 64 bits further up than the second.
template <unsigned bytes>
inline Vec128 movedOn(Vec128 x) {
    constexpr std::uint64_t factors[] = {powerInCrc(bytes * 8 + 32), powerInCrc(bytes * 8 - 32)};
    Vec128 by;
    std::memcpy(&by, factors, sizeof by);
    return bitXor(carrylessLow(x, by), carrylessHigh(x, by));
}

// Bytes are added (without carries) to those before that were moved on over them, until there are 16 with the same CRC
// as all. Four sums go side by side, since a product takes longer than it takes to begin the next.
std::uint32_t crc32(std::uint32_t crc, const std::uint8_t* bytes, std::size_t count) {
    if (count < 128) return reference.crc32(crc, bytes, count);
    Vec128 sums[4];
    for (unsigned i = 0; i < 4; ++i)
        sums[i] = load128(bytes + 16 * i);
    const std::uint32_t start[4] = {~crc};
    sums[0] = bitXor(sums[0], load128(reinterpret_cast<const std::uint8_t*>(start)));
    bytes += 64;
    count -= 64;
    for (; count >= 64; count -= 64, bytes += 64) {
        for (unsigned i = 0; i < 4; ++i)
            sums[i] = bitXor(movedOn<64>(sums[i]), load128(bytes + 16 * i));
    }
    Vec128 sum = sums[0];
    for (unsigned i = 1; i < 4; ++i)
        sum = bitXor(movedOn<16>(sum), sums[i]);
    std::uint8_t last[16];
    store128(last, sum);
    return reference.crc32(reference.crc32(~0U, last, sizeof last), bytes, count);
}

void useCrc(Table& table) {
    table.crc32 = crc32;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
