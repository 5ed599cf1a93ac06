// RLE4 and RLE8, row by row.
#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

namespace pixkit {

// Indexes that the codes pass over, and all after the end of the bitmap or of the data, are 0.
class BmpRunLength {
  public:
    BmpRunLength(std::span<const std::uint8_t> codes, bool isRle4) noexcept : m_codes(codes), m_isRle4(isRle4) {}

    // Writes the next row's indexes, one byte each. What a row's codes give beyond its end is dropped.
    void nextRow(std::span<std::uint8_t> indexes) noexcept;

    // The most pixels that this many bytes of codes can describe one by one.
    static std::uint64_t mostPixels(std::uint64_t bytes) noexcept { return bytes / 2 * 255; }

  private:
    bool applyEscape(std::uint8_t code, std::span<std::uint8_t> indexes);
    bool applyDelta(std::size_t width);
    std::span<std::uint8_t> advance(std::span<std::uint8_t> indexes, std::size_t count);
    void putRun(std::span<std::uint8_t> run, std::uint8_t value) const;
    void putLiterals(std::span<std::uint8_t> indexes, std::size_t count);

    std::span<const std::uint8_t> m_codes; // what is left of them
    std::size_t m_column = 0;              // where in the row the next pixel goes; at most its width
    std::size_t m_emptyRows = 0;           // rows to come that a delta passed over
    bool m_isRle4;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
