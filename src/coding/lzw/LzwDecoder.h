// Reads GIF's variety of LZW (GIF89a, appendix F).
#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace pixkit {

// How many bits an index may have. Above 8 only the low 8 bits of an index count.
inline constexpr unsigned lzwSmallestCodeSize = 1;
inline constexpr unsigned lzwGreatestCodeSize = 11;

// The indexes that codes stand for, one byte each.
class LzwIndexes {
  public:
    // Decodes `count` indexes; codes behind them are not looked at. Empty when the codes end too early, by their end
    // or by their end code, when one stands for no string yet, or when the code size is none. Throws std::bad_alloc,
    // but takes no memory for more indexes than so many codes can describe.
    LzwIndexes(std::span<const std::uint8_t> codes, unsigned codeSize, std::size_t count);

    explicit operator bool() const noexcept { return m_indexes != nullptr; }
    const std::uint8_t* data() const noexcept { return m_indexes; }

  private:
    std::unique_ptr<std::uint8_t[]> m_memory;
    const std::uint8_t* m_indexes = nullptr;
};

// Whether LzwIndexes would hold `count` indexes, found out without decoding them.
bool lzwDescribes(std::span<const std::uint8_t> codes, unsigned codeSize, std::size_t count) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
