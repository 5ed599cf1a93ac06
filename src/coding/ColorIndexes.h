// The colours of a picture that has few of them, numbered in the order in which they come.
#pragma once
#include "coding/Hash.h"
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace pixkit {

class ColorIndexes {
  public:
    static constexpr std::size_t mostColors = 256;

    // `limit`: how many colours there may be, 1 to mostColors.
    explicit ColorIndexes(std::size_t limit = mostColors) noexcept : m_limit(limit) {}

    // The index of a colour, any number of 32 bits, which is added when it is new; nothing when it is one too many.
    std::optional<std::uint8_t> add(std::uint32_t color) noexcept {
        const Slot& home = m_slots[homeOf(color)];
        if (home.color == color && home.isUsed) return home.index;
        if (const auto index = findFromHome(color)) return index;
        if (m_count == m_limit) return {};
        put(color);
        return static_cast<std::uint8_t>(m_count - 1);
    }
    bool has(std::uint32_t color) const noexcept {
        const Slot& home = m_slots[homeOf(color)];
        return (home.color == color && home.isUsed) || findFromHome(color);
    }
    // Of a colour that was added.
    std::uint8_t indexOf(std::uint32_t color) const noexcept {
        const Slot& home = m_slots[homeOf(color)];
        return home.color == color ? home.index : *findFromHome(color);
    }
    // The colour of each index.
    std::span<const std::uint32_t> colors() const noexcept { return std::span(m_colors).first(m_count); }

  private:
    static constexpr unsigned slotBits = 10; // four times the most colours, so that searches are short
    static constexpr std::size_t slots = std::size_t{1} << slotBits;
    struct Slot {
        std::uint32_t color = 0;
        bool isUsed = false;
        std::uint8_t index = 0;
    };
    static std::size_t homeOf(std::uint32_t color) noexcept { return spreadHash<slotBits>(color); }

    // Of its place and the next ones, and of the far ones. Not inline: most colours are in their places, and the code
    // that finds them there is quicker without this one in it.
    std::optional<std::uint8_t> findFromHome(std::uint32_t color) const noexcept;
    // The slot where a colour is, or has to go; `slots` where it is among the far ones, or has to go there.
    std::size_t slotOf(std::uint32_t color) const noexcept;
    // Where a colour is among the far ones, or has to go.
    std::size_t findFar(std::uint32_t color) const noexcept;
    void put(std::uint32_t color) noexcept;

    std::size_t m_limit;
    std::size_t m_count = 0;
    std::array<Slot, slots> m_slots{};
    std::array<std::uint32_t, mostColors> m_colors;
    std::array<std::uint8_t, mostColors> m_far; // indexes, by their colours
    std::size_t m_farCount = 0;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
