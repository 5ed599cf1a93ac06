#include "coding/deflate/Deflate.h"
#include "coding/ByteWriter.h"
#include "coding/deflate/BlockWriter.h"
#include "coding/deflate/MatchFinder.h"
#include "kernels/kernels.h"
#include <algorithm>
#include <array>

namespace pixkit::deflate {

namespace {

struct Effort {
    unsigned depth;     // places looked at for a copy
    unsigned lazyDepth; // and for one that begins a byte later; 0: not looked for
    std::size_t nice;   // a copy of this length is not searched for further
    unsigned lazyTurns; // how many bytes later a copy may begin at most
};

// Of the levels from 2.
constexpr std::array<Effort, 8> efforts = {{
    {4, 0, 32, 0},
    {8, 0, 64, 0},
    {8, 4, 64, 1},
    {12, 6, 96, 1},
    {24, 12, 160, 2},
    {48, 24, 258, 2},
    {100, 60, 258, 3},
    {400, 250, 258, 4},
}};

// Hashes and comparisons read eight bytes; the last few of the input are literals.
constexpr std::size_t tail = 8;

constexpr int costUnit = literalCostUnit;

// What a copy saves against its bytes as literals. A length takes about 7 bits, a distance about 4 and its extra bits.
// For noise, a short copy from far away costs more than it saves.
int gain(const Match& match, int literalCost) noexcept {
    if (match.length == 0) return -1;
    const int distanceBits = distanceExtra[distanceSymbolOf(match.distance)].bits;
    return static_cast<int>(match.length) * literalCost - (11 + distanceBits) * costUnit;
}

std::size_t limitAt(std::size_t position, std::size_t size) noexcept {
    return std::min(longestMatch, size - position);
}

void parseFast(std::span<const std::uint8_t> data, BlockWriter& blocks) {
    LatestFinder finder(data.data());
    int literalCost = static_cast<int>(blocks.literalCost());
    std::size_t position = 0;
    const std::size_t end = data.size() < tail ? 0 : data.size() - tail;
    while (position < end) {
        const Match match = finder.find(position, limitAt(position, data.size()));
        if (gain(match, literalCost) > 0) {
            blocks.match(match.length, match.distance);
            const std::size_t next = position + match.length;
            for (position += 2; position < std::min(next, end); position += 2)
                finder.note(position);
            position = next;
        } else {
            blocks.literal(data[position++]);
        }
        if (blocks.isSegmentFull()) {
            blocks.endSegment();
            literalCost = static_cast<int>(blocks.literalCost());
        }
    }
    for (; position < data.size(); ++position)
        blocks.literal(data[position]);
}

void parseLazily(std::span<const std::uint8_t> data, const Effort& effort, BlockWriter& blocks) {
    ChainFinder finder(data.data());
    int literalCost = static_cast<int>(blocks.literalCost());
    std::size_t position = 0;
    const std::size_t end = data.size() < tail ? 0 : data.size() - tail;
    while (position < end) {
        Match match = finder.find(position, limitAt(position, data.size()), 0, effort.depth, effort.nice);
        int saved = gain(match, literalCost);
        if (saved <= 0) {
            blocks.literal(data[position++]);
        } else {
            std::size_t noted = position + 1;
            for (unsigned turn = 0; turn < effort.lazyTurns && match.length < effort.nice && noted < end; ++turn) {
                const Match later =
                    finder.find(noted, limitAt(noted, data.size()), match.length - 1, effort.lazyDepth, effort.nice);
                ++noted;
                const int savedLater = gain(later, literalCost);
                if (savedLater <= saved) break;
                blocks.literal(data[position++]);
                match = later;
                saved = savedLater;
            }
            blocks.match(match.length, match.distance);
            position += match.length;
            for (; noted < std::min(position, end); ++noted)
                finder.note(noted);
        }
        if (blocks.isSegmentFull()) {
            blocks.endSegment();
            literalCost = static_cast<int>(blocks.literalCost());
        }
    }
    for (; position < data.size(); ++position)
        blocks.literal(data[position]);
}

} // namespace

void compressZlib(std::span<const std::uint8_t> data, int level, std::vector<std::uint8_t>& out) {
    level = std::clamp(level, 0, smallestLevel);
    // RFC 1950, 2.2: deflate with a window of 32 KiB; a hint at the level; the check bits make it a multiple of 31.
    const unsigned hint = level < 2 ? 0 : level < 6 ? 1 : level == 6 ? 2 : 3;
    const unsigned head = 0x7800 | hint << 6;
    const unsigned checked = head + 31 - head % 31;
    ByteWriter stream(out);
    stream.bigEndian16(checked);

    BlockWriter blocks(data.data(), out);
    if (level == 0) {
        blocks.storeAll(data.size());
    } else {
        if (level == fastestLevel) {
            parseFast(data, blocks);
        } else {
            parseLazily(data, efforts[static_cast<std::size_t>(level) - 2], blocks);
        }
        blocks.finish();
    }
    stream.bigEndian32(kernels::table().adler32(1, data.data(), data.size()));
}

} // namespace pixkit::deflate
