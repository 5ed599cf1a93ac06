// Which symbols of a DEFLATE stream go into one block.
#pragma once
#include "coding/deflate/BlockCoder.h"
#include "coding/deflate/Costs.h"
#include "coding/deflate/Symbols.h"
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace pixkit::deflate {

// Takes the symbols of a stream in order and writes them in blocks. Symbols come in segments of a few thousand; a block
// is as many segments as are cheaper together than apart.
class BlockWriter {
  public:
    // `input` are all the bytes of the stream.
    BlockWriter(std::span<const std::uint8_t> input, std::vector<std::uint8_t>& out);

    void literal(std::uint8_t byte) noexcept {
        ++m_segment.literal[byte];
        ++m_literals;
        ++m_segmentSymbols;
    }
    void match(std::size_t length, std::size_t distance) {
        m_segment.addCopy(length, distance);
        ++m_segmentSymbols;
        m_sequences.push_back(
            {m_literals, static_cast<std::uint16_t>(length), static_cast<std::uint16_t>(distance - 1)});
        m_segmentBytes += m_literals + length;
        m_literals = 0;
    }
    // To be asked after each symbol or each few.
    void endFullSegment() {
        if (m_segmentSymbols >= symbolsPerSegment) endSegment();
    }
    // What symbols will take, by the last segment.
    const Costs& costs() const noexcept { return m_costs; }
    // Writes what is left and closes the stream.
    void finish();

  private:
    static constexpr std::size_t symbolsPerSegment = 6000;
    static constexpr std::size_t mostSequences = 1U << 17; // in a block, for the sake of memory
    static constexpr std::size_t mostBytes = 1U << 22;     // so that counts fit where codes are made

    void endSegment();
    void writeBlock(std::size_t sequences, bool isLast);

    const std::uint8_t* m_input; // of the block
    BlockCoder m_coder;
    std::vector<Sequence> m_sequences; // of the block, then of the segment
    std::size_t m_blockSequences = 0;
    std::size_t m_blockBytes = 0;
    std::size_t m_segmentBytes = 0;
    std::size_t m_segmentSymbols = 0;
    std::uint32_t m_literals = 0; // since the last sequence
    Costs m_costs;
    std::uint64_t m_blockCost = 0; // estimated
    Histogram m_block, m_segment;
};

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
