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
        Slot& slot = m_slots[slotOf(color)];
        if (!slot.isUsed) {
            if (m_count == m_limit) return {};
            slot = {color, true, static_cast<std::uint8_t>(m_count)};
            m_colors[m_count++] = color;
        }
        return slot.index;
    }
    bool has(std::uint32_t color) const noexcept { return m_slots[slotOf(color)].isUsed; }
    // Of a colour that was added.
    std::uint8_t indexOf(std::uint32_t color) const noexcept { return m_slots[slotOf(color)].index; }
    // The colour of each index.
    std::span<const std::uint32_t> colors() const noexcept { return std::span(m_colors).first(m_count); }

  private:
    static constexpr unsigned slotBits = 10; // four times the most colours, so that searches are short
    struct Slot {
        std::uint32_t color = 0;
        bool isUsed = false;
        std::uint8_t index = 0;
    };
    // Where the colour is, or has to go.
    std::size_t slotOf(std::uint32_t color) const noexcept {
        std::size_t slot = spreadHash<slotBits>(color);
        while (m_slots[slot].color != color && m_slots[slot].isUsed)
            slot = (slot + 1) % m_slots.size();
        return slot;
    }

    std::size_t m_limit;
    std::size_t m_count = 0;
    std::array<Slot, std::size_t{1} << slotBits> m_slots{};
    std::array<std::uint32_t, mostColors> m_colors;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
