// The entropy-coded part of a JPEG file (ITU-T T.81, Annex F.1.2). Blocks are first taken apart into symbols, which are
// counted and kept; then the codes are made for what was counted, and the symbols are written with them.
#pragma once
#include "codecs/jpg/JpgHuffman.h"
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace pixkit {

class JpgScan {
  public:
    // Tables by kind: 0 luminance, 1 chrominance; of each one for DC and one for AC.
    static constexpr std::size_t kinds = 2;

    JpgScan();

    // Adds the next block of a component: its coefficients as kernels::Table::transformBlocks gives them, with the bits
    // that say which are not 0. `lastDc` belongs to the component and begins with 0.
    void addBlock(const std::int16_t* coefficients, std::uint64_t nonzero, std::size_t kind, std::int32_t& lastDc);

    // The codes for the blocks that were added.
    JpgHuffmanTable table(std::size_t kind, bool isAc) const;

    // Appends all blocks, coded with the tables that table() gives, padded with ones to a whole byte.
    void write(std::vector<std::uint8_t>& out) const;

  private:
    // A symbol with its table above bit 16; below, the additional bits that follow its code.
    using Token = std::uint32_t;
    static constexpr std::size_t chunkTokens = 0x4000;
    // A DC symbol, 63 AC symbols; runs of zeros and the end of block only where coefficients are not there.
    static constexpr std::size_t mostTokensOfBlock = 64;
    struct Chunk {
        std::unique_ptr<Token[]> tokens;
        std::size_t count = 0;
    };

    void beginChunk();
    std::uint32_t frequencyOf(std::size_t symbol) const noexcept {
        return m_frequencies[symbol] + m_frequencies[symbols + symbol];
    }
    JpgHuffmanTable tableOf(std::size_t table) const;

    std::vector<Chunk> m_chunks;
    Token* m_next = nullptr;
    std::size_t m_room = 0; // tokens that the last chunk still takes
    // Of symbols, by their tables: 2 * kind + isAc. Two counts of each, taken by turns, which add up: often the same
    // symbol comes again, and would have to wait for its count.
    static constexpr std::size_t symbols = 2 * kinds * 256;
    std::array<std::uint32_t, 2 * symbols> m_frequencies{};
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
