// Reference kernels for the checksums of zlib streams and PNG chunks.
#pragma once
#include "kernels/reference.h"

#include <array>

namespace pixkit::kernels {
namespace {

std::uint32_t adler32(std::uint32_t sum, const std::uint8_t* bytes, std::size_t count) {
    constexpr std::uint32_t base = 65521;
    constexpr std::size_t mostWithoutRemainder = 5552; // sums of so many bytes fit 32 bits
    std::uint32_t a = sum & 0xFFFF;
    std::uint32_t b = sum >> 16;
    while (count > 0) {
        const std::size_t taken = count < mostWithoutRemainder ? count : mostWithoutRemainder;
        for (std::size_t i = 0; i < taken; ++i) {
            a += bytes[i];
            b += a;
        }
        a %= base;
        b %= base;
        bytes += taken;
        count -= taken;
    }
    return b << 16 | a;
}

constexpr std::size_t crcSlices = 16;

// Slice k is what a byte does to the CRC when k bytes follow it.
constexpr auto crcTables = [] {
    std::array<std::array<std::uint32_t, 256>, crcSlices> made{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t crc = byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? 0xEDB88320U ^ (crc >> 1) : crc >> 1;
        made[0][byte] = crc;
    }
    for (std::size_t slice = 1; slice < crcSlices; ++slice) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t shorter = made[slice - 1][byte];
            made[slice][byte] = made[0][shorter & 255] ^ (shorter >> 8);
        }
    }
    return made;
}();

std::uint32_t crc32(std::uint32_t crc, const std::uint8_t* bytes, std::size_t count) {
    crc = ~crc;
    // Sixteen bytes at a time, whose look-ups do not wait for one another.
    for (; count >= crcSlices; count -= crcSlices, bytes += crcSlices) {
        std::uint32_t next = 0;
        for (std::size_t i = 0; i < crcSlices; ++i) {
            const std::uint32_t old = i < 4 ? crc >> (8 * i) : 0;
            next ^= crcTables[crcSlices - 1 - i][(bytes[i] ^ old) & 255];
        }
        crc = next;
    }
    for (; count > 0; --count)
        crc = crcTables[0][(crc ^ *bytes++) & 255] ^ (crc >> 8);
    return ~crc;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
