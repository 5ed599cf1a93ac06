#include "coding/deflate/RunCompressor.h"
#include "coding/ByteWriter.h"
#include "coding/deflate/MatchFinder.h"
#include "coding/deflate/ZlibHead.h"
#include "kernels/kernels.h"
#include <algorithm>

namespace pixkit::deflate {

namespace {

// Bytes are looked at so many at a time, and no shorter copy is taken. Shorter ones would be of literals that are so
// frequent that they take next to nothing.
constexpr std::size_t word = 8;

constexpr std::size_t mostBytes = 1U << 20; // in a block: rows may be that long

void addLiterals(Histogram& symbols, const ByteCounts& counts) noexcept {
    for (std::size_t i = 0; i < endOfBlock; ++i)
        symbols.literal[i] += counts[i];
}

// Calls `take(literals, length)` for so many literals and then a copy from `distance` back, whose length may be more
// than one symbol says, and 0 at the end. Counts literals.
template <typename Take>
void eachRun(std::span<const std::uint8_t> data, std::size_t distance, ByteCounts& counts, Take take) {
    const std::uint8_t* const p = data.data();
    std::size_t copied = 0; // where the last copy ended
    std::size_t i = std::min(distance, data.size());
    counts.add(data.first(i));
    while (data.size() - i >= word) {
        if (load64(p + i) != load64(p + i - distance)) {
            counts.addWord(p + i);
            i += word;
            continue;
        }
        std::size_t begin = i;
        while (begin > std::max(copied, distance) && p[begin - 1] == p[begin - 1 - distance])
            --begin;
        counts.remove(data.subspan(begin, i - begin)); // were no literals
        i += word + commonLength(p + i + word, p + i + word - distance, data.size() - i - word);
        take(begin - copied, i - begin);
        copied = i;
    }
    counts.add(data.subspan(i));
    if (data.size() > copied) take(data.size() - copied, std::size_t{0});
}

// A long run is copies of the greatest length, and one that is not too short for a copy.
template <typename Take>
void eachCopy(std::size_t length, Take take) {
    for (; length > longestMatch + shortestMatch; length -= longestMatch)
        take(longestMatch);
    if (length > longestMatch) {
        take(length - shortestMatch);
        length = shortestMatch;
    }
    if (length > 0) take(length);
}

} // namespace

RunCompressor::RunCompressor(std::vector<std::uint8_t>& out, std::size_t distance)
    : m_out(out), m_coder((writeZlibHead(out, 1), out)), m_distance(distance) {}

void RunCompressor::add(std::span<const std::uint8_t> piece, bool isLast) {
    m_adler = kernels::table().adler32(m_adler, piece.data(), piece.size());
    for (; piece.size() > mostBytes; piece = piece.subspan(mostBytes))
        addBlock(piece.first(mostBytes), false);
    addBlock(piece, isLast);
    if (!isLast) return;
    m_coder.finish();
    ByteWriter(m_out).bigEndian32(m_adler);
}

void RunCompressor::addBlock(std::span<const std::uint8_t> piece, bool isLast) {
    m_sequences.clear();
    ByteCounts counts;
    Histogram symbols;
    eachRun(piece, m_distance, counts, [&](std::size_t before, std::size_t length) {
        auto literals = static_cast<std::uint32_t>(before);
        if (length == 0) return m_sequences.push_back({literals, 0, 0});
        eachCopy(length, [&](std::size_t part) {
            symbols.addCopy(part, m_distance);
            m_sequences.push_back(
                {literals, static_cast<std::uint16_t>(part), static_cast<std::uint16_t>(m_distance - 1)});
            literals = 0;
        });
    });
    addLiterals(symbols, counts);
    m_coder.write(piece, symbols, m_sequences, isLast);
}

std::size_t runCompressedSize(std::span<const std::uint8_t> data, std::size_t distance) {
    ByteCounts counts;
    Histogram symbols;
    std::size_t extra = 0; // bits
    const std::size_t distanceSymbol = distanceSymbolOf(distance);
    eachRun(data, distance, counts, [&](std::size_t, std::size_t length) {
        eachCopy(length, [&](std::size_t part) {
            const std::size_t symbol = lengthSymbolOf[part];
            ++symbols.literal[endOfBlock + 1 + symbol];
            ++symbols.distance[distanceSymbol];
            extra += std::size_t{1} + lengthExtra[symbol].bits + distanceExtra[distanceSymbol].bits; // a code of a bit
        });
    });
    addLiterals(symbols, counts);
    return static_cast<std::size_t>(symbols.blockCost() / costUnit + extra) / 8;
}

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
