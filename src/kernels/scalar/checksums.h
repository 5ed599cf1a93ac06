// Reference kernel for the checksum of zlib streams.
#pragma once
#include "kernels/reference.h"

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

} // namespace
} // namespace pixkit::kernels
