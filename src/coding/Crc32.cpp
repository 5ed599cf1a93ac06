#include "coding/Crc32.h"
#include <array>
#include <cstddef>

namespace pixkit {

namespace {

constexpr std::size_t slices = 16;

// Slice k is what a byte does to the CRC when k bytes follow it.
constexpr auto tables = [] {
    std::array<std::array<std::uint32_t, 256>, slices> made{};
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        std::uint32_t crc = byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) != 0 ? 0xEDB88320U ^ (crc >> 1) : crc >> 1;
        made[0][byte] = crc;
    }
    for (std::size_t slice = 1; slice < slices; ++slice) {
        for (std::size_t byte = 0; byte < 256; ++byte) {
            const std::uint32_t shorter = made[slice - 1][byte];
            made[slice][byte] = made[0][shorter & 255] ^ (shorter >> 8);
        }
    }
    return made;
}();

} // namespace

std::uint32_t crc32(std::uint32_t crc, std::span<const std::uint8_t> bytes) noexcept {
    crc = ~crc;
    const std::uint8_t* p = bytes.data();
    std::size_t rest = bytes.size();
    // Sixteen bytes at a time, whose look-ups do not wait for one another.
    for (; rest >= slices; rest -= slices, p += slices) {
        std::uint32_t next = 0;
        for (std::size_t i = 0; i < slices; ++i) {
            const std::uint32_t old = i < 4 ? crc >> (8 * i) : 0;
            next ^= tables[slices - 1 - i][(p[i] ^ old) & 255];
        }
        crc = next;
    }
    for (; rest > 0; --rest)
        crc = tables[0][(crc ^ *p++) & 255] ^ (crc >> 8);
    return ~crc;
}

} // namespace pixkit
