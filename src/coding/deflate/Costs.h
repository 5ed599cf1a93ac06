// What symbols take, estimated from how often they occurred, so that only copies are made that are shorter than what
// they replace. All in integers: every build decides alike.
#pragma once
#include "coding/deflate/Symbols.h"
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

namespace pixkit::deflate {

struct Histogram {
    std::array<std::uint32_t, literalSymbols> literal{}; // literals and lengths; the end of the block is not counted
    std::array<std::uint32_t, distanceSymbols> distance{};

    void add(const Histogram& other) noexcept;
    void addCopy(std::size_t copied, std::size_t away) noexcept {
        ++literal[endOfBlock + 1 + lengthSymbolOf[copied]];
        ++distance[distanceSymbolOf(away)];
    }
    // What a block of these symbols takes, estimated, in units of a costUnit-th of a bit: of thousands of symbols the
    // errors add up. Without the extra bits, which are the same however the symbols are put into blocks.
    std::uint64_t blockCost() const noexcept;
};

// How often each byte occurs, counted in several tables, so that equal neighbours do not wait for one another.
class ByteCounts {
  public:
    ByteCounts() = default;
    explicit ByteCounts(std::span<const std::uint8_t> bytes) noexcept { add(bytes); }

    void add(std::span<const std::uint8_t> bytes) noexcept;
    // Of eight.
    void addWord(const std::uint8_t* bytes) noexcept {
        std::uint64_t all;
        std::memcpy(&all, bytes, sizeof all);
        for (std::size_t i = 0; i < sizeof all; ++i, all >>= 8)
            ++m_tables[i % tables][all & 0xFF];
    }
    // Takes back some that were added.
    void remove(std::span<const std::uint8_t> bytes) noexcept {
        for (const std::uint8_t byte : bytes)
            --m_tables[0][byte];
    }
    std::uint32_t operator[](std::size_t byte) const noexcept {
        return m_tables[0][byte] + m_tables[1][byte] + m_tables[2][byte] + m_tables[3][byte];
    }

  private:
    static constexpr std::size_t tables = 4;
    std::array<std::array<std::uint32_t, endOfBlock>, tables> m_tables{};
};

constexpr unsigned costUnit = 256; // of a bit

// log2(value) * costUnit, rounded down; value > 0
unsigned logarithm(std::uint32_t value) noexcept;

// In units of a costUnit-th of a bit.
struct Costs {
    std::array<std::uint32_t, endOfBlock> literal;
    std::array<std::uint32_t, longestMatch + 1> length{}; // from shortestMatch on, with the extra bits
    std::array<std::uint32_t, distanceSymbols> distance;  // with the extra bits

    // What these symbols took, and others would.
    explicit Costs(const Histogram& symbols) noexcept;
    // Of data of which nothing is known but what its bytes would take without any copy.
    explicit Costs(std::span<const std::uint8_t> data) noexcept;

    // What the codes take that RFC 1951 lists, the shortest for tiny data, which no head of a block has to describe.
    static Costs fixedCodes() noexcept;

    // Prices literals as if all of `data` were some. By what the literals between copies take, those that copies
    // replace seem dearer than they are; then more copies seem to pay, literals become still dearer, and in the end a
    // picture of small differences takes a tenth more.
    void takeLiterals(std::span<const std::uint8_t> data) noexcept;

    std::uint32_t copy(std::size_t copied, std::size_t away) const noexcept {
        return length[copied] + distance[distanceSymbolOf(away)];
    }
};

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
