// IHDR as it stands in a file (PNG standard, 11.2.2). Nothing of it is judged here.
#pragma once
#include "coding/ByteReader.h"
#include <cstdint>
#include <optional>
#include <span>

namespace pixkit {

struct PngHeader {
    static constexpr std::size_t size = 13;

    std::uint32_t width, height;
    std::uint8_t bitDepth, colorType, compressionMethod, filterMethod, interlacing;
};

// The chunk's data; nothing where it is too short.
inline std::optional<PngHeader> readPngHeader(std::span<const std::uint8_t> data) noexcept {
    if (data.size() < PngHeader::size) return {};
    const ByteReader reader(data);
    return PngHeader{reader.bigEndian32(0).value_or(0),
                     reader.bigEndian32(4).value_or(0),
                     data[8],
                     data[9],
                     data[10],
                     data[11],
                     data[12]};
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
