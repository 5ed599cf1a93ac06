// Rows of pixels, coded or not, to B, G, R, A.
#pragma once
#include "codecs/bmp/BmpInfo.h"
#include "codecs/bmp/BmpMasks.h"
#include "codecs/bmp/BmpRunLength.h"
#include "codecs/bmp/BmpWideRows.h"
#include <optional>
#include <vector>

namespace pixkit {

// Takes all the memory that it needs when it is made. `info` and `data`, which begins with the first row, outlive it.
class BmpRows {
  public:
    BmpRows(const BmpInfo& info, std::span<const std::uint8_t> data);
    // Bytes of it, at most.
    static double memory(const BmpInfo& info) noexcept { return static_cast<double>(info.rowBytes()) + info.width; }

    // The next row in the order of the file: info.width pixels, alpha not applied to the colours.
    void nextRow(std::uint8_t* dst);
    // Whether rows in the file have the store's own layout, alpha included.
    bool areAsStored() const noexcept { return m_info.bitCount == 32 && m_masked.areAsStored(); }
    // The next row as it stands in the file, which must not be run-length coded.
    const std::uint8_t* nextRowBytes();

  private:
    const BmpInfo& m_info;
    std::span<const std::uint8_t> m_data; // what is left of it
    std::size_t m_width, m_rowBytes;
    BmpRunLength m_runLength;
    BmpMaskedRows m_masked;
    std::optional<BmpWideRows> m_wide;
    std::vector<std::uint8_t> m_indexes;   // of one row
    std::vector<std::uint8_t> m_lastBytes; // of the row in which the data ends, and those after it
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
