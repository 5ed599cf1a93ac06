// GIF's variety of LZW (CompuServe's GIF89a, Appendix F), written.
#pragma once
#include <cstdint>
#include <span>
#include <vector>

namespace pixkit {

// Appends the image data of `indexes`, each below 1 << depth (depth 1 .. 8): the minimum code size, the codes in
// sub-blocks, the block terminator.
void gifCompress(std::span<const std::uint8_t> indexes, unsigned depth, std::vector<std::uint8_t>& out);

} // namespace pixkit
// SPDX-License-Identifier: MIT
