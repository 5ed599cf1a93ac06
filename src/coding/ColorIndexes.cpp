#include "coding/ColorIndexes.h"
#include <algorithm>

namespace pixkit {

namespace {

constexpr std::size_t mostSteps = 8; // one palette in fifty has a colour so far from its place

} // namespace

std::size_t ColorIndexes::slotOf(std::uint32_t color) const noexcept {
    std::size_t slot = homeOf(color);
    for (std::size_t step = 0; step < mostSteps; ++step, slot = (slot + 1) % slots)
        if (!m_slots[slot].isUsed || m_slots[slot].color == color) return slot;
    return slots;
}

// No slot is ever emptied: a colour for which there was no room in its place or the next ones is in none of them later,
// either. It is among the far ones, of which pictures that are made for that have many: they are sorted.
std::optional<std::uint8_t> ColorIndexes::findFromHome(std::uint32_t color) const noexcept {
    const std::size_t slot = slotOf(color);
    if (slot < slots) return m_slots[slot].isUsed ? std::optional(m_slots[slot].index) : std::nullopt;
    const std::size_t place = findFar(color);
    if (place == m_farCount || m_colors[m_far[place]] != color) return {};
    return m_far[place];
}

std::size_t ColorIndexes::findFar(std::uint32_t color) const noexcept {
    const auto far = std::span(m_far).first(m_farCount);
    const auto colorOf = [&](std::uint8_t index) { return m_colors[index]; };
    return static_cast<std::size_t>(std::ranges::lower_bound(far, color, {}, colorOf) - far.begin());
}

void ColorIndexes::put(std::uint32_t color) noexcept {
    const auto index = static_cast<std::uint8_t>(m_count);
    m_colors[m_count++] = color;
    const std::size_t slot = slotOf(color);
    if (slot < slots) {
        m_slots[slot] = {color, true, index};
        return;
    }
    const auto place = m_far.begin() + static_cast<std::ptrdiff_t>(findFar(color));
    const auto end = m_far.begin() + static_cast<std::ptrdiff_t>(m_farCount++);
    std::copy_backward(place, end, end + 1);
    *place = index;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
