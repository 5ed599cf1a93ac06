// The alphabets of DEFLATE (RFC 1951, 3.2.5 to 3.2.7): which symbol stands for a length or a distance, how many bits
// follow, and how codes are described.
#pragma once
#include <array>
#include <cstddef>
#include <cstdint>

namespace pixkit::deflate {

constexpr std::size_t shortestMatch = 3;
constexpr std::size_t longestMatch = 258;
constexpr unsigned windowBits = 15;
constexpr std::size_t windowSize = std::size_t{1} << windowBits;

constexpr std::size_t literalSymbols = 286; // literals, end of block, lengths
constexpr std::size_t distanceSymbols = 30;
constexpr std::size_t codeLengthSymbols = 19;
constexpr std::size_t endOfBlock = 256;

// The fixed codes have codes for two symbols more each, which stand for nothing.
constexpr std::size_t literalCodes = literalSymbols + 2;
constexpr std::size_t distanceCodes = distanceSymbols + 2;
constexpr unsigned longestCode = 15; // bits

constexpr std::array<std::uint8_t, literalCodes> fixedLiteralLengths = [] {
    std::array<std::uint8_t, literalCodes> lengths{};
    for (std::size_t i = 0; i < literalCodes; ++i)
        lengths[i] = i < 144 ? 8 : i < 256 ? 9 : i < 280 ? 7 : 8;
    return lengths;
}();
constexpr std::array<std::uint8_t, distanceCodes> fixedDistanceLengths = [] {
    std::array<std::uint8_t, distanceCodes> lengths{};
    lengths.fill(5);
    return lengths;
}();

// The order in which the lengths of the code length code stand in the head of a block. Symbols below 16 are lengths.
constexpr std::array<std::uint8_t, codeLengthSymbols> codeLengthOrder = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                                         11, 4,  12, 3, 13, 2, 14, 1, 15};
constexpr std::size_t repeatLast = 16; // the length before, 3 to 6 times
constexpr std::size_t fewZeros = 17;   // 3 to 10 times 0
constexpr std::size_t manyZeros = 18;  // 11 to 138 times 0
constexpr unsigned repeatExtraBits(std::size_t symbol) noexcept {
    return symbol < repeatLast ? 0 : symbol == repeatLast ? 2 : symbol == fewZeros ? 3 : 7;
}
constexpr unsigned fewestRepeats(std::size_t symbol) noexcept {
    return symbol == manyZeros ? 11 : 3;
}

struct ExtraBits {
    std::uint16_t base;
    std::uint8_t bits;
};

// Of length symbol 257 + i. Length 258 has a symbol of its own, without extra bits.
constexpr std::array<ExtraBits, 29> lengthExtra = [] {
    std::array<ExtraBits, 29> table{};
    unsigned base = shortestMatch;
    for (unsigned i = 0; i < 28; ++i) {
        const unsigned bits = i < 8 ? 0 : i / 4 - 1;
        table[i] = {static_cast<std::uint16_t>(base), static_cast<std::uint8_t>(bits)};
        base += 1U << bits;
    }
    table[28] = {longestMatch, 0};
    return table;
}();

constexpr std::array<ExtraBits, distanceSymbols> distanceExtra = [] {
    std::array<ExtraBits, distanceSymbols> table{};
    unsigned base = 1;
    for (unsigned i = 0; i < distanceSymbols; ++i) {
        const unsigned bits = i < 4 ? 0 : i / 2 - 1;
        table[i] = {static_cast<std::uint16_t>(base), static_cast<std::uint8_t>(bits)};
        base += 1U << bits;
    }
    return table;
}();

// The length symbol, less 257, of each length.
constexpr std::array<std::uint8_t, longestMatch + 1> lengthSymbolOf = []() {
    std::array<std::uint8_t, longestMatch + 1> table{};
    for (std::size_t i = 0; i < lengthExtra.size(); ++i)
        for (std::size_t length = lengthExtra[i].base; length <= longestMatch; ++length)
            table[length] = static_cast<std::uint8_t>(i);
    return table;
}();

// Distances below 257 by themselves, greater ones by their upper bits: those of one such group have one symbol.
constexpr std::array<std::uint8_t, 512> distanceSymbols512 = [] {
    std::array<std::uint8_t, 512> table{};
    std::size_t symbol = 0;
    for (std::size_t distance = 1; distance <= windowSize; ++distance) {
        while (symbol + 1 < distanceSymbols && distanceExtra[symbol + 1].base <= distance)
            ++symbol;
        const std::size_t index = distance <= 256 ? distance - 1 : 256 + ((distance - 1) >> 7);
        table[index] = static_cast<std::uint8_t>(symbol);
    }
    return table;
}();

constexpr std::size_t distanceSymbolOf(std::size_t distance) noexcept {
    return distanceSymbols512[distance <= 256 ? distance - 1 : 256 + ((distance - 1) >> 7)];
}

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
