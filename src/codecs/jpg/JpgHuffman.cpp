#include "codecs/jpg/JpgHuffman.h"
#include <algorithm>
#include <utility>

namespace pixkit {

namespace {

constexpr std::size_t longest = 16;
constexpr std::size_t mostLeaves = 257;

struct Symbol {
    std::uint64_t frequency;
    std::uint8_t value;
};

// How many leaves of the optimal tree lie at each depth. `frequencies` ascend; there are at least two. Two queues, of
// leaves and of the nodes made of them, both in ascending order, give the two rarest at every step.
std::array<std::uint32_t, mostLeaves> leavesOfDepth(std::span<const std::uint64_t> frequencies) {
    const std::size_t leaves = frequencies.size();
    std::array<std::uint64_t, 2 * mostLeaves> weight{};
    std::array<std::uint16_t, 2 * mostLeaves> parent{};
    std::ranges::copy(frequencies, weight.begin());
    std::size_t leaf = 0, node = leaves;
    const std::size_t root = 2 * leaves - 2;
    for (std::size_t made = leaves; made <= root; ++made) {
        for (int child = 0; child < 2; ++child) {
            const bool takesLeaf = leaf < leaves && (node == made || weight[leaf] <= weight[node]);
            const std::size_t taken = takesLeaf ? leaf++ : node++;
            weight[made] += weight[taken];
            parent[taken] = static_cast<std::uint16_t>(made);
        }
    }
    std::array<std::uint16_t, 2 * mostLeaves> depth{};
    std::array<std::uint32_t, mostLeaves> counts{};
    for (std::size_t i = root; i-- > 0;) {
        depth[i] = static_cast<std::uint16_t>(depth[parent[i]] + 1);
        if (i < leaves) ++counts[depth[i]];
    }
    return counts;
}

// T.81, Figure K.3: two leaves that are too deep give way to one leaf above them and a pair below a shallower one.
void limitDepth(std::array<std::uint32_t, mostLeaves>& counts) {
    for (std::size_t depth = mostLeaves - 1; depth > longest; --depth) {
        while (counts[depth] > 0) {
            std::size_t shallower = depth - 2;
            while (counts[shallower] == 0)
                --shallower;
            counts[depth] -= 2;
            ++counts[depth - 1];
            counts[shallower + 1] += 2;
            --counts[shallower];
        }
    }
}

} // namespace

JpgHuffmanTable JpgHuffmanTable::make(std::span<const std::uint32_t, 256> frequencies) {
    std::vector<Symbol> occurring;
    for (std::size_t i = 0; i < frequencies.size(); ++i) {
        if (frequencies[i] > 0) occurring.push_back({frequencies[i], static_cast<std::uint8_t>(i)});
    }
    std::ranges::sort(occurring, {}, [](const Symbol& symbol) { return std::pair(symbol.frequency, symbol.value); });

    JpgHuffmanTable table;
    if (occurring.empty()) return table;
    // A leaf that stands for no symbol is the rarest of all, so that the code of only ones is its.
    std::vector<std::uint64_t> weights{0};
    for (const Symbol& symbol : occurring)
        weights.push_back(symbol.frequency);
    auto counts = leavesOfDepth(weights);
    limitDepth(counts);
    std::size_t deepest = longest;
    while (counts[deepest] == 0)
        --deepest;
    --counts[deepest];

    std::ranges::reverse(occurring);
    unsigned code = 0;
    std::size_t next = 0;
    for (std::size_t length = 1; length <= longest; ++length, code <<= 1) {
        table.countOfLength[length - 1] = static_cast<std::uint8_t>(counts[length]);
        for (std::uint32_t i = 0; i < counts[length]; ++i, ++next, ++code) {
            const std::uint8_t value = occurring[next].value;
            table.symbols.push_back(value);
            table.codes[value] = {static_cast<std::uint16_t>(code), static_cast<std::uint8_t>(length)};
        }
    }
    return table;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
