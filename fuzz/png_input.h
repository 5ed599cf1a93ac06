// What the PNG targets share.
#pragma once
#include "surface/cPixSheet.h"
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

// Sets every CRC to 0, which is never checked, so that changed chunks are read with zlib too. Returns the pixels that
// the greatest IHDR asks for: big pictures only cost time.
inline std::uint64_t withoutCrcs(std::vector<std::uint8_t>& png) {
    std::uint64_t pixels = 0;
    const auto bigEndian32 = [&](std::size_t at) {
        return std::uint64_t{png[at]} << 24 | std::uint64_t{png[at + 1]} << 16 | std::uint64_t{png[at + 2]} << 8 |
               png[at + 3];
    };
    for (std::uint64_t at = 8; at + 12 <= png.size();) {
        const std::uint64_t length = bigEndian32(at);
        if (length + 12 > png.size() - at) break;
        if (png[at + 4] == 'I' && png[at + 5] == 'H' && length >= 8) {
            pixels = std::max(pixels, bigEndian32(at + 8) * bigEndian32(at + 12));
        }
        std::fill_n(png.begin() + static_cast<std::ptrdiff_t>(at + 8 + length), 4, std::uint8_t{0});
        at += length + 12;
    }
    return pixels;
}

inline constexpr std::uint64_t mostPixels = 1 << 18;

// Other data may be an icon that holds PNG images, whose CRCs are checked.
inline bool bearsSignature(const std::uint8_t* data, std::size_t bytes) {
    constexpr std::uint8_t signature[] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    return bytes >= sizeof signature && std::equal(signature, signature + sizeof signature, data);
}

// Both empty, or the same picture.
inline bool isSame(const pixkit::cPixSheet& a, const pixkit::cPixSheet& b) {
    return a.Width() == b.Width() && a.Height() == b.Height() && a.Alpha() == b.Alpha() &&
           a.ImageType() == b.ImageType() &&
           std::equal(a.BitsPointer(), a.BitsPointer() + a.scanWidth() * a.Height(), b.BitsPointer());
}
