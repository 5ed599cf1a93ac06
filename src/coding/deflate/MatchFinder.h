// Finds earlier copies of the bytes at a position, by hashes of the first three or four.
#pragma once
#include "coding/Hash.h"
#include "coding/deflate/Symbols.h"
#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>

namespace pixkit::deflate {

inline std::uint32_t load32(const std::uint8_t* p) noexcept {
    std::uint32_t value;
    std::memcpy(&value, p, sizeof value);
    return value;
}
inline std::uint64_t load64(const std::uint8_t* p) noexcept {
    std::uint64_t value;
    std::memcpy(&value, p, sizeof value);
    return value;
}

// The first byte lowest, whatever the machine's order of bytes: chains decide what is found.
inline std::uint32_t loadLittle32(const std::uint8_t* p) noexcept {
    const std::uint32_t value = load32(p);
    if constexpr (std::endian::native == std::endian::big)
        return value >> 24 | (value >> 8 & 0xFF00) | (value << 8 & 0xFF0000) | value << 24;
    return value;
}

// How many bytes two places have in common, at most `limit`.
inline std::size_t commonLength(const std::uint8_t* a, const std::uint8_t* b, std::size_t limit) noexcept {
    std::size_t length = 0;
    for (; limit - length >= 8; length += 8) {
        const std::uint64_t difference = load64(a + length) ^ load64(b + length);
        if (difference == 0) continue;
        if constexpr (std::endian::native == std::endian::little)
            return length + static_cast<std::size_t>(std::countr_zero(difference)) / 8;
        else
            return length + static_cast<std::size_t>(std::countl_zero(difference)) / 8;
    }
    while (length < limit && a[length] == b[length])
        ++length;
    return length;
}

struct Match {
    std::size_t length = 0; // 0: none
    std::size_t distance = 0;
};

// Hashes and comparisons read eight bytes; for the last few of the input nothing is looked for, but where as many are
// readable behind it.
constexpr std::size_t finderTail = 8;

struct Input {
    std::span<const std::uint8_t> data;
    std::size_t searched; // at so many positions, the first, copies are looked for
};

// Chains of all places with one hash, the latest first, and the latest alone of a hash of one byte less: short copies
// are only worth their while from near by. Positions are those in the input plus one window, so that a table full of
// zeros means places too far away.
class ChainFinder {
  public:
    // Copies have `shortest` bytes at least: 3 or 4.
    ChainFinder(std::span<const std::uint8_t> input, std::size_t shortest)
        : m_input(input.data()), m_shortest(shortest), m_unhashed(shortest == 3 ? 8 : 0),
          m_fifth(shortest == 3 ? 0 : 0xFF),
          m_slots(std::clamp<std::size_t>(std::bit_ceil(input.size()), 256, windowSize)),
          m_tables(std::make_unique_for_overwrite<Tables>()) {
        std::fill_n(m_tables->head.begin(), m_slots, 0U);
        std::fill_n(m_tables->previous.begin(), m_slots, 0U);
        std::fill_n(m_tables->latest.begin(), 2 * m_slots, 0U);
    }

    // The longest earlier copy of the bytes at `position`, longer than `shorter`, after looking at `depth` places; one
    // of `nice` bytes is good enough. At least 8 bytes, of which `limit` may be copied, must be there. Notes the
    // position.
    Match find(std::size_t position, std::size_t limit, std::size_t shorter, unsigned depth,
               std::size_t nice) noexcept {
        Match best;
        walk(position, limit, shorter, depth, nice, [&](const Match& longer) { best = longer; });
        return best;
    }
    // Takes all earlier copies that are longer than those nearer by, the nearest first.
    template <typename Take>
    void findAll(std::size_t position, std::size_t limit, unsigned depth, Take take) {
        walk(position, limit, 0, depth, longestMatch, take);
    }

    void note(std::size_t position) noexcept {
        const std::uint8_t* const here = m_input + position;
        const std::uint32_t first = loadLittle32(here);
        const auto at = static_cast<std::uint32_t>(position + windowSize);
        std::uint32_t& head = headOf(first, here[4]);
        previousOf(position) = head;
        head = at;
        latestOf(first) = at;
    }

  private:
    // Of four bytes and, where copies of four have a table of their own, the fifth.
    std::uint32_t& headOf(std::uint32_t first, std::uint32_t fifth) const noexcept {
        const std::uint32_t hashed = first + (fifth & static_cast<std::uint32_t>(m_fifth)) * 0x85EBCA6BU;
        return m_tables->head[spreadHash<windowBits>(hashed) & (m_slots - 1)];
    }
    std::uint32_t& latestOf(std::uint32_t first) const noexcept {
        return m_tables->latest[spreadHash<windowBits + 1>(first << m_unhashed) & (2 * m_slots - 1)];
    }
    std::uint32_t& previousOf(std::size_t position) const noexcept {
        return m_tables->previous[position & (m_slots - 1)];
    }
    // Most of the time goes by waiting for the tables.
    void prefetch(const std::uint8_t* next) const noexcept {
        const std::uint32_t first = loadLittle32(next);
        __builtin_prefetch(&headOf(first, next[4]), 1);
        __builtin_prefetch(&latestOf(first), 1);
    }

    template <typename Take>
    void walk(std::size_t position, std::size_t limit, std::size_t shorter, unsigned depth, std::size_t nice,
              Take take) noexcept(noexcept(take(Match()))) {
        const std::uint8_t* const here = m_input + position;
        const auto at = static_cast<std::uint32_t>(position + windowSize);
        const std::uint32_t first = loadLittle32(here);
        std::uint32_t& head = headOf(first, here[4]);
        std::uint32_t& latest = latestOf(first);
        std::uint32_t place = head;
        const std::uint32_t nearest = at - latest;
        previousOf(position) = place;
        head = latest = at;
        prefetch(here + 1);
        std::size_t longest = std::max(shorter, m_shortest - 1);
        if (longest >= limit) return;
        if (longest < m_shortest && nearest < windowSize && (loadLittle32(here - nearest) ^ first) << m_unhashed == 0) {
            longest = m_shortest + commonLength(here + m_shortest, here + m_shortest - nearest, limit - m_shortest);
            take(Match{longest, nearest});
            if (longest >= nice || longest >= limit) return;
        }
        // A longer copy has the four bytes that end with its next one, too.
        std::size_t checked = std::max<std::size_t>(longest, 3) - 3;
        std::uint32_t last = load32(here + checked);
        for (; at - place < windowSize && depth > 0; --depth) {
            const std::uint8_t* const there = here - (at - place);
            if (load32(there + checked) == last && loadLittle32(there) == first) {
                const std::size_t length = commonLength(here, there, limit);
                if (length > longest) {
                    take(Match{length, at - place});
                    longest = length;
                    if (length >= nice || length >= limit) break;
                    checked = longest - 3;
                    last = load32(here + checked);
                }
            }
            place = previousOf(place);
        }
    }

    struct Tables {
        std::array<std::uint32_t, windowSize> head, previous; // of hashes, of positions
        std::array<std::uint32_t, 2 * windowSize> latest;     // of shorter copies
    };
    const std::uint8_t* m_input;
    std::size_t m_shortest;
    // Not of the tables' type, or compilers would read them anew after every store there.
    std::size_t m_unhashed; // bits of the fourth byte that do not count
    std::size_t m_fifth;    // bits of the fifth byte that do
    std::size_t m_slots;    // small data uses the beginning of the tables
    std::unique_ptr<Tables> m_tables;
};

// The latest place of each hash alone.
class LatestFinder {
  public:
    explicit LatestFinder(const std::uint8_t* input) : m_input(input), m_latest(std::make_unique<Table>()) {}

    Match find(std::size_t position, std::size_t limit) noexcept {
        const std::uint8_t* const here = m_input + position;
        const auto at = static_cast<std::uint32_t>(position + windowSize);
        std::uint32_t& latest = (*m_latest)[hashAt(here)];
        const std::uint32_t distance = at - latest;
        latest = at;
        if (distance >= windowSize || load32(here) != load32(here - distance)) return {};
        return {hashedBytes + commonLength(here + hashedBytes, here + hashedBytes - distance, limit - hashedBytes),
                distance};
    }
    void note(std::size_t position) noexcept {
        (*m_latest)[hashAt(m_input + position)] = static_cast<std::uint32_t>(position + windowSize);
    }

  private:
    static constexpr std::size_t hashedBytes = 4;
    static constexpr unsigned hashBits = 14;
    static std::uint32_t hashAt(const std::uint8_t* p) noexcept { return spreadHash<hashBits>(loadLittle32(p)); }

    using Table = std::array<std::uint32_t, 1U << hashBits>;
    const std::uint8_t* m_input;
    std::unique_ptr<Table> m_latest;
};

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
