// Entries of decoding tables for Huffman codes, as far as joining them goes: coding/deflate/HuffmanTable.h has the
// rest.
#pragma once
#include <cstdint>

namespace pixkit::kernels {

// Bits 0..7 count the bits that it takes, 8..11 those of its code alone (never 0), 12..13 the literals that it puts
// out. A literal stands in bits 16..23 and in bits 24..31; bits 16..23 of a copy are 0, so that a literal before it can
// be put there.
using CodeEntry = std::uint32_t;

inline constexpr CodeEntry oneLiteral = 1u << 12;  // counts them
inline constexpr CodeEntry literalFlag = 1u << 14; // literals are all it puts out
inline constexpr CodeEntry specialFlag = 1u << 15; // it is to stay alone

constexpr unsigned codeBits(CodeEntry entry) noexcept {
    return (entry >> 8) & 15;
}
constexpr bool isLiteral(CodeEntry entry) noexcept {
    return (entry & literalFlag) != 0;
}

} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
