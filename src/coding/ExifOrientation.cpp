#include "coding/ExifOrientation.h"
#include "coding/ByteReader.h"

namespace pixkit {

std::uint8_t exifOrientation(std::span<const std::uint8_t> tiff) noexcept {
    constexpr std::uint8_t asStored = 1, most = 8;
    constexpr std::size_t entryBytes = 12;
    constexpr std::uint16_t orientationTag = 0x0112, typeShort = 3, typeLong = 4;
    const ByteReader reader(tiff);
    const auto order = reader.littleEndian16(0);
    const bool isLittleEndian = order == 0x4949;             // "II"
    if (!isLittleEndian && order != 0x4D4D) return asStored; // "MM"
    const auto word = [&](std::size_t at) {
        const std::uint16_t value = reader.littleEndian16(at).value_or(0);
        return isLittleEndian ? value : static_cast<std::uint16_t>(value << 8 | value >> 8);
    };
    const auto number = [&](std::size_t at) {
        return (isLittleEndian ? reader.littleEndian32(at) : reader.bigEndian32(at)).value_or(0);
    };
    if (word(2) != 42) return asStored;
    const std::size_t directory = number(4);
    if (directory > tiff.size()) return asStored; // sums stay below what counts them
    const std::size_t entries = word(directory);
    for (std::size_t i = 0; i < entries; ++i) { // at most 65,535
        const std::size_t at = directory + 2 + i * entryBytes;
        if (!reader.slice(at, entryBytes)) break;
        if (word(at) != orientationTag || number(at + 4) != 1) continue;
        const std::uint16_t type = word(at + 2);
        const std::uint32_t value = type == typeShort ? word(at + 8) : type == typeLong ? number(at + 8) : 0;
        return value >= asStored && value <= most ? static_cast<std::uint8_t>(value) : asStored;
    }
    return asStored;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
