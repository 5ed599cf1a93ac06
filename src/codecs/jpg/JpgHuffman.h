// Huffman codes made for one picture (ITU-T T.81, Annexes C and K.2).
#pragma once
#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace pixkit {

struct JpgHuffmanTable {
    struct Code {
        std::uint16_t bits = 0;  // the code in its low bits
        std::uint8_t length = 0; // 1 .. 16; 0 for symbols that have none
    };

    std::array<std::uint8_t, 16> countOfLength{}; // [i]: how many codes have i + 1 bits
    std::vector<std::uint8_t> symbols;            // in the order of their codes
    std::array<Code, 256> codes{};

    // The codes that code symbols of these frequencies in the fewest bits, under the format's rules: none is longer
    // than 16 bits, none has only ones. Symbols that do not occur get no code.
    static JpgHuffmanTable make(std::span<const std::uint32_t, 256> frequencies);
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
