#include "codecs/bmp/BmpRunLength.h"
#include "kernels/kernels.h"
#include <algorithm>

namespace pixkit {

namespace {
enum Escape : std::uint8_t { endOfLine = 0, endOfBitmap = 1, delta = 2 }; // 3 and more: that many literal pixels
} // namespace

void BmpRunLength::nextRow(std::span<std::uint8_t> indexes) noexcept {
    std::ranges::fill(indexes, std::uint8_t{0});
    if (m_emptyRows > 0) {
        --m_emptyRows;
        return;
    }
    bool isRowDone = false;
    while (!isRowDone && m_codes.size() >= 2) {
        const std::uint8_t count = m_codes[0];
        const std::uint8_t value = m_codes[1];
        m_codes = m_codes.subspan(2);
        if (count != 0) {
            putRun(advance(indexes, count), value);
        } else {
            isRowDone = applyEscape(value, indexes);
        }
    }
}

// Whether the row ends with it.
bool BmpRunLength::applyEscape(std::uint8_t code, std::span<std::uint8_t> indexes) {
    switch (code) {
    case endOfLine:
        m_column = 0;
        return true;
    case endOfBitmap:
        m_codes = {};
        return true;
    case delta:
        return applyDelta(indexes.size());
    default:
        putLiterals(indexes, code);
        return false;
    }
}

// To the right, and to rows that come later in the file.
bool BmpRunLength::applyDelta(std::size_t width) {
    if (m_codes.size() < 2) {
        m_codes = {};
        return true;
    }
    const std::uint8_t down = m_codes[1];
    m_column = std::min(m_column + m_codes[0], width);
    m_codes = m_codes.subspan(2);
    if (down == 0) return false;
    m_emptyRows = down - std::size_t{1};
    return true;
}

// The room for the next pixels, cut at the row's end; moves past them.
std::span<std::uint8_t> BmpRunLength::advance(std::span<std::uint8_t> indexes, std::size_t count) {
    const auto room = indexes.subspan(m_column, std::min(count, indexes.size() - m_column));
    m_column += room.size();
    return room;
}

// In RLE4 a run alternates between the two halves of its value.
void BmpRunLength::putRun(std::span<std::uint8_t> run, std::uint8_t value) const {
    if (!m_isRle4) {
        std::ranges::fill(run, value);
        return;
    }
    for (std::size_t i = 0; i < run.size(); ++i)
        run[i] = static_cast<std::uint8_t>(i % 2 == 0 ? value >> 4 : value & 15);
}

// Literal pixels are padded to an even number of bytes. Those that the data lacks stay 0.
void BmpRunLength::putLiterals(std::span<std::uint8_t> indexes, std::size_t count) {
    const std::size_t bytes = m_isRle4 ? (count + 1) / 2 : count;
    const auto literals = m_codes.first(std::min(bytes, m_codes.size()));
    m_codes = m_codes.subspan(std::min(bytes + bytes % 2, m_codes.size()));
    const auto room = advance(indexes, count);
    if (m_isRle4) {
        kernels::table().unpackSamples(room.data(), literals.data(), std::min(room.size(), literals.size() * 2), 4);
    } else {
        std::copy_n(literals.begin(), std::min(room.size(), literals.size()), room.begin());
    }
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
