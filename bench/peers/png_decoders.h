// The decoders that PNG loading is compared with. Each gives premultiplied B, G, R, A, rows bottom-up, as the component
// does; those that decode straight colours are followed by a plain premultiplying loop, and only where a picture has
// alpha.
#pragma once
#include <cstdint>
#include <memory>
#include <span>

namespace bench {

struct Decoded {
    std::uint32_t width = 0, height = 0;
    std::unique_ptr<std::uint8_t[]> pixels;
};

// Each throws std::runtime_error when the picture cannot be decoded.
Decoded decodeLibpngRows(std::span<const std::uint8_t> png);
Decoded decodeLibpngSimplified(std::span<const std::uint8_t> png);
Decoded decodeSpng(std::span<const std::uint8_t> png);
Decoded decodeStb(std::span<const std::uint8_t> png);

} // namespace bench
// SPDX-License-Identifier: MIT
