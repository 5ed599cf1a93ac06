// Run-length packets, row by row.
#pragma once
#include "codecs/tga/TgaSamples.h"
#include <span>

namespace pixkit {

// A packet is a byte of which the low seven bits are the number of its pixels less one; with the top bit one pixel
// follows that is repeated, without it all of them. Packets may cross rows.
class TgaRunLength {
  public:
    // `data` begins with the first packet.
    TgaRunLength(std::span<const std::uint8_t> data, const TgaLayout& layout) noexcept
        : m_data(data), m_layout(layout) {}

    // Writes the next row; false when the data ends before it is full.
    bool nextRow(std::uint8_t* dst, std::size_t width) noexcept;

    // Whether the data can hold so many pixels: the best that the coding can do is packets of 128 equal ones.
    static bool canHold(std::size_t pixels, std::size_t dataBytes, std::size_t bytesPerPixel) noexcept {
        return dataBytes / (1 + bytesPerPixel) >= (pixels + 127) / 128;
    }

  private:
    template <std::size_t bytes>
    bool decodeRow(std::uint8_t* dst, std::size_t width) noexcept;
    template <std::size_t bytes>
    std::size_t decodeWholePackets(std::uint8_t* dst, std::size_t width) noexcept;
    bool openPacket() noexcept;

    std::span<const std::uint8_t> m_data; // what is left of it
    TgaLayout m_layout;
    std::size_t m_left = 0; // pixels of the packet that the last row has left over
    bool m_isRun = false;
    std::uint32_t m_runPixel = 0;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
