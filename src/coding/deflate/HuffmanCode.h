// Huffman codes for writing: from how often symbols occur to the bits that stand for them.
#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

namespace pixkit::deflate {

// Code lengths for symbols by frequency, the best where none would be longer than `longest` bits (1 .. 15), else close
// to it. Symbols that do not occur get 0. There are always two codes at least (of one bit then), since decoders differ
// on what they make of one. At most 288 symbols, fewer than 2^23 occurrences of each.
void makeCodeLengths(std::span<const std::uint32_t> frequencies, unsigned longest, std::span<std::uint8_t> lengths);

// The codes that belong to the lengths (RFC 1951, 3.2.2), their bits in the order in which they are written.
void makeCodes(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> codes);

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
