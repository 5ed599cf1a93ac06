// The checksum of PNG chunks by the instructions that 64-bit ARM processors have for it.
#include "kernels/simd/units.h"

#include <arm_acle.h>
#include <cstring>

namespace pixkit::kernels {
namespace {

std::uint32_t crc32(std::uint32_t crc, const std::uint8_t* bytes, std::size_t count) {
    crc = ~crc;
    for (; count >= 8; count -= 8, bytes += 8) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, bytes, sizeof eight);
        crc = __crc32d(crc, eight);
    }
    for (; count > 0; --count)
        crc = __crc32b(crc, *bytes++);
    return ~crc;
}

} // namespace

void useNeonCrc(Table& table) noexcept {
    table.crc32 = crc32;
}

} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
