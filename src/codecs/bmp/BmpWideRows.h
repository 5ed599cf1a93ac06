// Pixels of 64 bits, as GDI+ writes them.
#pragma once
#include <array>
#include <cstddef>
#include <cstdint>

namespace pixkit {

// Turns B, G, R, A of 16 bits each, signed and with 13 bits behind the point, into bytes. 0 to 1 is what a screen
// shows; what lies outside is held there. Colours are amounts of light, which become sRGB (IEC 61966-2-1), rounded to
// nearest like alpha, which is not applied to them.
class BmpWideRows {
  public:
    BmpWideRows();

    // Rows do not overlap.
    void convert(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) const;

  private:
    std::array<std::int16_t, 255> m_least{}; // [i]: the least amount of light that is i + 1
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
