// Vector kernel for the checksum of zlib streams.
#pragma once
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

// Of a vector's bytes, the first counts as often as there are bytes, the last once; words as lowWords and highWords
// give them.
inline Vec weights(bool high) {
    std::uint16_t words[vecBytes / 2];
    for (std::size_t i = 0; i < vecBytes / 2; ++i) {
        const std::size_t byte = i / 8 * 16 + (high ? 8 : 0) + i % 8;
        words[i] = static_cast<std::uint16_t>(vecBytes - byte);
    }
    Vec v;
    std::memcpy(&v, words, sizeof v);
    return v;
}

std::uint32_t adler32(std::uint32_t sum, const std::uint8_t* bytes, std::size_t count) {
    constexpr std::uint32_t base = 65521;
    constexpr std::size_t most = 5536 / vecBytes * vecBytes; // no lane overflows
    const Vec lowWeights = weights(false);
    const Vec highWeights = weights(true);
    while (count >= vecBytes) {
        const std::size_t taken = count < most ? count / vecBytes * vecBytes : most;
        Vec plain = zeros();    // of the bytes so far
        Vec before = zeros();   // of what `plain` was before each vector
        Vec weighted = zeros(); // within the vectors
        for (std::size_t i = 0; i < taken; i += vecBytes) {
            const Vec x = load(bytes + i);
            before = add32(before, plain);
            plain = add32(plain, sumsOf8(x));
            weighted = add32(weighted, multiplyAddPairs16(widenLow8(x), lowWeights));
            weighted = add32(weighted, multiplyAddPairs16(widenHigh8(x), highWeights));
        }
        const std::uint64_t a = sum & 0xFFFF;
        const std::uint64_t b = (sum >> 16) + a * taken + laneSum32(before) * vecBytes + laneSum32(weighted);
        sum = static_cast<std::uint32_t>(b % base) << 16 | static_cast<std::uint32_t>((a + laneSum32(plain)) % base);
        bytes += taken;
        count -= taken;
    }
    return reference.adler32(sum, bytes, count);
}

inline void useChecksums(Table& table) {
    table.adler32 = adler32;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
