// Inflates a zlib stream that comes in pieces into rooms as small as may be, each of them a heap block of its exact
// size with the history that copies may take from. Shared with the fuzz target.
#pragma once
#include "coding/deflate/Inflate.h"
#include <algorithm>
#include <memory>
#include <vector>

namespace pixkit::test {

class InPieces final : public deflate::Pieces {
  public:
    InPieces(std::span<const std::uint8_t> stream, std::size_t pieceBytes, std::size_t capacity)
        : m_stream(stream), m_pieceBytes(pieceBytes), m_capacity(capacity) {}

    deflate::Result run() {
        const auto result = deflate::inflatePieces(*this);
        output.insert(output.end(), m_block.begin() + m_history, m_block.end());
        output.resize(std::min(result.written, output.size()));
        return result;
    }

    std::vector<std::uint8_t> output;

  private:
    std::span<const std::uint8_t> moreInput() noexcept override {
        const auto piece = m_stream.first(std::min(m_pieceBytes, m_stream.size()));
        m_piece.assign(piece.begin(), piece.end());
        m_stream = m_stream.subspan(piece.size());
        return m_piece;
    }
    deflate::Room moreRoom(std::uint8_t* next) noexcept override {
        if (next != nullptr) output.insert(output.end(), m_block.data() + m_history, next);
        m_history = static_cast<std::ptrdiff_t>(std::min(output.size(), deflate::farthestCopy));
        const std::size_t room = std::min(m_capacity - output.size(), deflate::Room::least);
        const auto keep = static_cast<std::size_t>(m_history);
        std::vector<std::uint8_t> block(keep + room);
        std::copy(output.end() - m_history, output.end(), block.begin());
        m_block.swap(block);
        std::uint8_t* const begin = m_block.data();
        return {begin, begin + m_history, begin + keep + room, output.size() + room == m_capacity};
    }

    std::span<const std::uint8_t> m_stream;
    std::size_t m_pieceBytes, m_capacity;
    std::vector<std::uint8_t> m_piece, m_block;
    std::ptrdiff_t m_history = 0;
};

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
