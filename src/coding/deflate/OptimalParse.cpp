#include "coding/deflate/OptimalParse.h"
#include "coding/deflate/Costs.h"
#include "coding/deflate/MatchFinder.h"
#include <algorithm>
#include <vector>

namespace pixkit::deflate {

namespace {

// So many bytes are weighed at a time; no copy reaches over a border.
constexpr std::size_t stretchBytes = 1U << 16;
// Of all its positions together. Only data made for it has more, and then the rest goes without.
constexpr std::size_t mostCopies = 16 * stretchBytes;
// What symbols cost depends on what is chosen, and the other way round.
constexpr int passes = 3;

// One step of a way: a copy that begins here, or a literal.
struct Step {
    std::uint16_t length = 1;
    std::uint16_t distance = 0;
};

class Stretch {
  public:
    Stretch(const Input& input, std::size_t shortest)
        : m_data(input.data), m_searched(input.searched), m_finder(input.data, shortest) {}

    void weigh(std::size_t begin, std::size_t end, unsigned depth, bool byFixedCodes) {
        m_begin = begin;
        m_count = end - begin;
        findCopies(depth);
        if (byFixedCodes) return choose(Costs::fixedCodes());
        Costs costs(m_data.subspan(begin, m_count));
        for (int pass = 0; pass < passes; ++pass) {
            if (pass > 0) costs = Costs(chosen());
            choose(costs);
        }
    }

    template <typename Literal, typename Copy>
    void walk(Literal literal, Copy copy) const {
        for (std::size_t i = 0; i < m_count; i += m_steps[i].length) {
            if (m_steps[i].length == 1)
                literal(m_data[m_begin + i]);
            else
                copy(m_steps[i].length, m_steps[i].distance);
        }
    }

  private:
    // All copies of each position, those of one position with increasing lengths and distances.
    void findCopies(unsigned depth) {
        m_copies.clear();
        m_firstCopy.assign(m_count + 1, 0);
        std::size_t covered = 0; // within a long copy there is no need to look
        for (std::size_t i = 0; i < m_count; ++i) {
            m_firstCopy[i] = static_cast<std::uint32_t>(m_copies.size());
            const std::size_t position = m_begin + i;
            if (position >= m_searched) continue;
            if (i < covered || m_copies.size() >= mostCopies) {
                m_finder.note(position);
                continue;
            }
            m_finder.findAll(position, std::min(longestMatch, m_count - i), depth, [&](const Match& copy) {
                m_copies.push_back(
                    {static_cast<std::uint16_t>(copy.length), static_cast<std::uint16_t>(copy.distance)});
            });
            if (m_copies.size() > m_firstCopy[i] && m_copies.back().length == longestMatch) covered = i + longestMatch;
        }
        m_firstCopy[m_count] = static_cast<std::uint32_t>(m_copies.size());
    }

    // The cheapest way from each position to the end, from the last position on.
    void choose(const Costs& costs) {
        m_toEnd.assign(m_count + 1, 0);
        m_steps.assign(m_count, {});
        for (std::size_t i = m_count; i-- > 0;) {
            std::uint32_t least = m_toEnd[i + 1] + costs.literal[m_data[m_begin + i]];
            Step best;
            std::size_t length = shortestMatch;
            for (std::uint32_t k = m_firstCopy[i]; k < m_firstCopy[i + 1]; ++k) {
                const Step found = m_copies[k];
                const std::uint32_t distance = costs.distance[distanceSymbolOf(found.distance)];
                for (; length <= found.length; ++length) {
                    const std::uint32_t cost = m_toEnd[i + length] + costs.length[length] + distance;
                    if (cost < least) {
                        least = cost;
                        best = {static_cast<std::uint16_t>(length), found.distance};
                    }
                }
            }
            m_toEnd[i] = least;
            m_steps[i] = best;
        }
    }

    Histogram chosen() const {
        Histogram symbols;
        walk([&](std::uint8_t byte) { ++symbols.literal[byte]; },
             [&](std::size_t length, std::size_t distance) { symbols.addCopy(length, distance); });
        return symbols;
    }

    std::span<const std::uint8_t> m_data;
    std::size_t m_searched;
    ChainFinder m_finder;
    std::size_t m_begin = 0, m_count = 0;
    std::vector<Step> m_copies;
    std::vector<std::uint32_t> m_firstCopy; // of each position, and the end
    std::vector<std::uint32_t> m_toEnd;     // costs
    std::vector<Step> m_steps;
};

} // namespace

void parseOptimally(const Input& input, std::size_t shortest, unsigned depth, bool byFixedCodes, BlockWriter& blocks) {
    const std::span data = input.data;
    Stretch stretch(input, shortest);
    for (std::size_t begin = 0; begin < data.size(); begin += stretchBytes) {
        stretch.weigh(begin, std::min(begin + stretchBytes, data.size()), depth, byFixedCodes);
        stretch.walk(
            [&](std::uint8_t byte) {
                blocks.literal(byte);
                blocks.endFullSegment();
            },
            [&](std::size_t length, std::size_t distance) {
                blocks.match(length, distance);
                blocks.endFullSegment();
            });
    }
}

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
