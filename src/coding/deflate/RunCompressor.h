// The fastest compression: data comes in pieces that are in the cache, and the only copies are those from one fixed
// distance back, which rows of a picture have where a colour, or a difference of colours, repeats.
#pragma once
#include "coding/deflate/BlockCoder.h"
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace pixkit::deflate {

// Appends a zlib stream to `out`.
class RunCompressor {
  public:
    // Pieces of this size, or a few times that, are the best: their symbols share a code. What cannot be compressed
    // fits one stored block.
    static constexpr std::size_t pieceBytes = 65535;

    // Copies come from `distance` bytes back, 1 to 32768. Throws std::bad_alloc, like the rest.
    RunCompressor(std::vector<std::uint8_t>& out, std::size_t distance);
    // All bytes of the stream piece by piece; one is the last.
    void add(std::span<const std::uint8_t> piece, bool isLast);

  private:
    void addBlock(std::span<const std::uint8_t> piece, bool isLast);

    std::vector<std::uint8_t>& m_out;
    BlockCoder m_coder;
    std::size_t m_distance;
    std::uint32_t m_adler = 1;
    std::vector<Sequence> m_sequences; // of a piece
};

// How many bytes such a stream of `data` takes, estimated.
std::size_t runCompressedSize(std::span<const std::uint8_t> data, std::size_t distance);

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
