// What stands before the pixels of a BMP file: headers, masks, palette, and where the pixels are.
#pragma once
#include "diagnostics/Outcome.h"
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace pixkit {

// biCompression of the headers from 40 bytes on.
enum class BmpCompression : std::uint32_t {
    rgb = 0,
    rle8 = 1,
    rle4 = 2,
    bitFields = 3,
    jpeg = 4,
    png = 5,
    alphaBitFields = 6
};

// Which bits of a pixel are a channel; 0 = none.
struct BmpMasks {
    std::uint32_t red = 0, green = 0, blue = 0, alpha = 0;
};

struct BmpInfo {
    std::int32_t width = 0, height = 0; // above 0; the pixels fit a store
    bool isTopDown = false;
    unsigned bitCount = 0; // 1, 2, 4, 8, 16, 24, 32 or 64
    BmpCompression compression = BmpCompression::rgb;
    BmpMasks masks; // for 16 and 32 bits
    // Ready pixels for 256 indexes; those that the file does not give are black. For up to 8 bits.
    std::array<std::uint8_t, 256 * 4> palette{};
    std::size_t pixelOffset = 0; // from the data's beginning; never beyond its end

    bool isRunLength() const noexcept {
        return compression == BmpCompression::rle8 || compression == BmpCompression::rle4;
    }
    // Bytes of a row that is not run-length coded, padded to four.
    std::size_t rowBytes() const noexcept;
};

// Nothing when the data does not begin with "BM" or describes no picture that can be read; `why` then receives the
// reason. Says nothing of whether the pixels are there.
std::optional<BmpInfo> readBmpInfo(std::span<const std::uint8_t> file, Reason& why);
// The JPEG or PNG file that a BMP file holds instead of pixels; nothing when it holds none, of which the first 64 bytes
// already tell most.
bool mayEmbedPicture(std::span<const std::uint8_t> start) noexcept;
std::span<const std::uint8_t> embeddedPicture(std::span<const std::uint8_t> file) noexcept;
// The same as readBmpInfo for a picture without the file header, as icons hold it: the pixels follow the palette, and
// pixelOffset counts from the picture's header.
std::optional<BmpInfo> readDibInfo(std::span<const std::uint8_t> dib, Reason& why);
inline std::optional<BmpInfo> readDibInfo(std::span<const std::uint8_t> dib) {
    Reason why; // which nobody asks for
    return readDibInfo(dib, why);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
