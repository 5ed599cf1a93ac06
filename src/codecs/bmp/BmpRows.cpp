#include "codecs/bmp/BmpRows.h"
#include "kernels/kernels.h"
#include <algorithm>

namespace pixkit {

BmpRows::BmpRows(const BmpInfo& info, std::span<const std::uint8_t> data)
    : m_info(info), m_data(data), m_width(static_cast<std::size_t>(info.width)), m_rowBytes(info.rowBytes()),
      m_runLength(data, info.compression == BmpCompression::rle4), m_masked(info.masks, info.bitCount) {
    if (info.isRunLength() || info.bitCount < 8) m_indexes.resize(m_width);
    if (!info.isRunLength()) m_lastBytes.resize(m_rowBytes);
    if (info.bitCount == 64) m_wide.emplace();
}

void BmpRows::nextRow(std::uint8_t* dst) {
    const auto& kernel = kernels::table();
    if (m_info.isRunLength()) {
        m_runLength.nextRow(m_indexes);
        kernel.fromIndex8(dst, m_indexes.data(), m_width, m_info.palette.data());
        return;
    }
    const std::uint8_t* const src = nextRowBytes();
    switch (m_info.bitCount) {
    case 8:
        kernel.fromIndex8(dst, src, m_width, m_info.palette.data());
        break;
    case 16:
    case 32:
        m_masked.convert(dst, src, m_width);
        break;
    case 24:
        kernel.unpack24(dst, src, m_width, false);
        break;
    case 64:
        m_wide->convert(dst, src, m_width);
        break;
    default: // 1, 2, 4
        kernel.unpackSamples(m_indexes.data(), src, m_width, m_info.bitCount);
        kernel.fromIndex8(dst, m_indexes.data(), m_width, m_info.palette.data());
    }
}

// Bytes that the data lacks are 0.
const std::uint8_t* BmpRows::nextRowBytes() {
    if (m_data.size() >= m_rowBytes) {
        const std::uint8_t* const row = m_data.data();
        m_data = m_data.subspan(m_rowBytes);
        return row;
    }
    std::ranges::fill(std::ranges::copy(m_data, m_lastBytes.begin()).out, m_lastBytes.end(), std::uint8_t{0});
    m_data = {};
    return m_lastBytes.data();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
