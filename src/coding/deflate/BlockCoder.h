// Blocks of a DEFLATE stream (RFC 1951, 3.2.3), each stored in the way that is the shortest.
#pragma once
#include "coding/BitWriter.h"
#include "coding/deflate/Costs.h"
#include "coding/deflate/Symbols.h"
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace pixkit::deflate {

// So many literals, which stand in the input, and then a copy. Without one the length is 0.
struct Sequence {
    std::uint32_t literals;
    std::uint16_t length;
    std::uint16_t distance; // less 1
};

class BlockCoder {
  public:
    // Appends to `out`.
    explicit BlockCoder(std::vector<std::uint8_t>& out) : m_bits(out) {}

    // `input` are the bytes that the sequences stand for, `symbols` how often each symbol occurs in them, without the
    // end of the block.
    void write(std::span<const std::uint8_t> input, Histogram& symbols, std::span<const Sequence> sequences,
               bool isLast);
    // As it is, in as many blocks as that takes.
    void store(std::span<const std::uint8_t> input, bool isLast);
    // Behind the last block.
    void finish();

  private:
    void putSequences(const std::uint8_t* in, std::span<const Sequence> sequences,
                      const std::array<std::uint8_t, literalCodes>& literalLengths,
                      const std::array<std::uint8_t, distanceCodes>& distanceLengths);

    BitWriter m_bits;
};

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
