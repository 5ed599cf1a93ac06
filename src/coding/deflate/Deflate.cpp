#include "coding/deflate/Deflate.h"
#include "coding/ByteWriter.h"
#include "coding/deflate/BlockWriter.h"
#include "coding/deflate/MatchFinder.h"
#include "coding/deflate/OptimalParse.h"
#include "coding/deflate/RunCompressor.h"
#include "coding/deflate/ZlibHead.h"
#include "kernels/kernels.h"
#include <algorithm>
#include <array>

namespace pixkit::deflate {

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Effort {
    unsigned depth;     // places looked at for a copy
    unsigned lazyDepth; // and for one that begins a byte later; 0: not looked for
    std::size_t nice;   // a copy of this length is not searched for further
    unsigned lazyTurns; // how many bytes later a copy may begin at most
};

// Of the levels from 3 to 8.
constexpr int firstLazyLevel = 3;
constexpr std::array<Effort, 6> efforts = {{
    {8, 0, 64, 0},
    {8, 4, 64, 1},
    {12, 6, 96, 1},
    {32, 16, 160, 2},
    {48, 24, 258, 2},
    {100, 60, 258, 3},
}};
constexpr unsigned smallestDepth = 100;

// What is so small is done soon whatever the effort: from level 6 on it gets that of level 8, tiny data that of
// level 9.
constexpr std::size_t smallData = 1U << 20, tinyData = 1U << 12;

// After so many literals in a row copies are rare: fewer places are looked at, and then every other position alone.
constexpr std::size_t drought = 32, longDrought = 128;
constexpr unsigned droughtDepth = 4;

// What a copy saves against its bytes as literals; of a long one the first bytes stand for all.
int gain(const Match& match, const std::uint8_t* bytes, const Costs& costs) noexcept {
    if (match.length == 0) return -1;
    constexpr std::size_t sample = 16;
    // Most are short: without a loop nobody has to guess how short.
    std::uint32_t literals = costs.literal[bytes[0]] + costs.literal[bytes[1]] + costs.literal[bytes[2]];
    const std::uint32_t fourth = costs.literal[bytes[3]];
    literals += match.length > 3 ? fourth : 0;
    for (std::size_t i = 4; i < std::min(match.length, sample); ++i)
        literals += costs.literal[bytes[i]];
    if (match.length > sample) literals = static_cast<std::uint32_t>(literals * match.length / sample);
    return static_cast<int>(literals) - static_cast<int>(costs.copy(match.length, match.distance));
}

std::size_t limitAt(std::size_t position, std::size_t size) noexcept {
    return std::min(longestMatch, size - position);
}

// Copies of three bytes pay only where literals are dear.
std::size_t shortestCopyOf(std::span<const std::uint8_t> data) noexcept {
    constexpr std::uint64_t dear = 5 * costUnit;
    const ByteCounts counts(data);
    const Costs costs(data);
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < endOfBlock; ++i)
        sum += std::uint64_t{counts[i]} * costs.literal[i];
    return sum > dear * data.size() ? 3 : 4;
}

void parseFast(const Input& input, BlockWriter& blocks) {
    const std::span data = input.data;
    LatestFinder finder(data.data());
    std::size_t position = 0;
    const std::size_t end = input.searched;
    while (position < end) {
        const Match match = finder.find(position, limitAt(position, data.size()));
        if (gain(match, &data[position], blocks.costs()) > 0) {
            blocks.match(match.length, match.distance);
            const std::size_t next = position + match.length;
            for (position += 2; position < std::min(next, end); position += 2)
                finder.note(position);
            position = next;
        } else {
            blocks.literal(data[position++]);
        }
        blocks.endFullSegment();
    }
    for (; position < data.size(); ++position)
        blocks.literal(data[position]);
}

void parseLazily(const Input& input, std::size_t shortest, const Effort& effort, BlockWriter& blocks) {
    const std::span data = input.data;
    ChainFinder finder(data, shortest);
    std::size_t position = 0;
    std::size_t lastCopy = 0; // where it ended
    const std::size_t end = input.searched;
    for (; position < end; blocks.endFullSegment()) {
        const std::size_t without = position - lastCopy;
        if (without > longDrought && without % 2 == 0) {
            finder.note(position);
            blocks.literal(data[position++]);
            continue;
        }
        const unsigned depth = without > drought ? std::min(droughtDepth, effort.depth) : effort.depth;
        Match match = finder.find(position, limitAt(position, data.size()), 0, depth, effort.nice);
        int saved = gain(match, &data[position], blocks.costs());
        if (saved <= 0) {
            blocks.literal(data[position++]);
            continue;
        }
        std::size_t noted = position + 1;
        for (unsigned turn = 0; turn < effort.lazyTurns && match.length < effort.nice && noted < end; ++turn) {
            const Match later =
                finder.find(noted, limitAt(noted, data.size()), match.length - 1, effort.lazyDepth, effort.nice);
            const int savedLater = gain(later, &data[noted], blocks.costs());
            ++noted;
            if (savedLater <= saved) break;
            blocks.literal(data[position++]);
            match = later;
            saved = savedLater;
        }
        blocks.match(match.length, match.distance);
        position += match.length;
        lastCopy = position;
        for (; noted < std::min(position, end); ++noted)
            finder.note(noted);
    }
    for (; position < data.size(); ++position)
        blocks.literal(data[position]);
}

void compressRuns(std::span<const std::uint8_t> data, Bytes& out) {
    RunCompressor runs(out, 1);
    for (; data.size() > RunCompressor::pieceBytes; data = data.subspan(RunCompressor::pieceBytes))
        runs.add(data.first(RunCompressor::pieceBytes), false);
    runs.add(data, true);
}

void compress(const Input& input, int level, Bytes& out) {
    const std::span data = input.data;
    if (level == 0) {
        BlockCoder coder(out);
        coder.store(data, true);
        return coder.finish();
    }
    BlockWriter blocks(data, out);
    if (level == smallestLevel)
        parseOptimally(input, shortestCopyOf(data), smallestDepth, false, blocks);
    else if (level < firstLazyLevel)
        parseFast(input, blocks);
    else {
        const bool isQuick = level < defaultLevel;
        const bool isLittle = !isQuick && data.size() <= smallData;
        parseLazily(input, isQuick ? 4 : shortestCopyOf(data),
                    isLittle ? efforts.back() : efforts[static_cast<std::size_t>(level - firstLazyLevel)], blocks);
    }
    blocks.finish();
}

} // namespace

void compressZlib(std::span<const std::uint8_t> data, int level, std::vector<std::uint8_t>& out) {
    level = std::clamp(level, 0, smallestLevel);
    if (level == fastestLevel) return compressRuns(data, out);
    writeZlibHead(out, level);
    const std::size_t begin = out.size();
    Input input{data, data.size() - std::min(data.size(), finderTail)};
    Bytes padded, other;
    const auto takeSmaller = [&] {
        if (other.size() < out.size() - begin) {
            out.resize(begin);
            out.insert(out.end(), other.begin(), other.end());
        }
        other.clear();
    };
    const bool isTiny = level >= defaultLevel && data.size() <= tinyData;
    if (isTiny) {
        level = smallestLevel;
        padded.assign(data.begin(), data.end());
        padded.resize(data.size() + finderTail);
        input = {std::span(padded).first(data.size()), data.size()};
    }
    compress(input, level, out);
    if (level == smallestLevel) { // now and then looking less far gives less
        compress(input, level - 1, other);
        takeSmaller();
    }
    if (isTiny) {
        BlockWriter blocks(input.data, other);
        parseOptimally(input, shortestMatch, smallestDepth, true, blocks);
        blocks.finish();
        takeSmaller();
    }
    ByteWriter(out).bigEndian32(kernels::table().adler32(1, data.data(), data.size()));
}

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
