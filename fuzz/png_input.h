// What the PNG targets share.
#pragma once
#include "coding/ByteReader.h"
#include "targets.h"

namespace pixkit::fuzz {

// The input with every CRC 0, which is never checked, so that changed chunks are read with zlib too. Empty when it is
// no PNG, or asks for so many pixels that they only cost time. (Icons may hold PNG images, whose CRCs are checked.)
inline std::vector<std::uint8_t> withoutCrcs(const std::uint8_t* data, std::size_t bytes) {
    std::vector<std::uint8_t> png(data, data + bytes);
    const ByteReader reader(png);
    if (reader.bigEndian32(0) != 0x89504E47 || reader.bigEndian32(4) != 0x0D0A1A0A) return {};
    for (std::uint64_t at = 8; at + 12 <= bytes;) {
        const std::uint64_t length = reader.bigEndian32(at).value_or(0);
        if (length + 12 > bytes - at) break;
        const bool isHeader = png[at + 4] == 'I' && png[at + 5] == 'H' && length >= 8;
        if (isHeader && std::uint64_t{*reader.bigEndian32(at + 8)} * *reader.bigEndian32(at + 12) > 1 << 18) return {};
        std::fill_n(png.begin() + static_cast<std::ptrdiff_t>(at + 8 + length), 4, std::uint8_t{0});
        at += length + 12;
    }
    return png;
}

} // namespace pixkit::fuzz
