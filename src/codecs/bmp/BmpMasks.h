// Pixels whose channels are bits of 16- or 32-bit words.
#pragma once
#include "codecs/bmp/BmpInfo.h"

namespace pixkit {

// Turns words into B, G, R, A as the masks say, alpha not applied to the colours. A channel of n bits is scaled to 0 ..
// 255 exactly: value * 255 / (2^n - 1), rounded to nearest. A colour without a mask is 0; without one for alpha, all
// pixels are opaque.
class BmpMaskedRows {
  public:
    BmpMaskedRows(const BmpMasks& masks, unsigned bitCount);

    // Whether words are B, G, R, A already.
    bool areAsStored() const noexcept { return m_layout == Layout::bgra && m_hasAlpha; }
    // Rows do not overlap.
    void convert(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) const;

  private:
    class Channel {
      public:
        Channel(std::uint32_t mask, std::uint8_t valueWithoutMask);
        std::uint8_t of(std::uint32_t word) const noexcept {
            const std::uint32_t value = (word & m_mask) >> m_shift;
            return m_most < m_scaled.size() ? m_scaled[value] : scale(value);
        }

      private:
        std::uint8_t scale(std::uint32_t value) const noexcept {
            return static_cast<std::uint8_t>((std::uint64_t{value} * 255 + m_most / 2) / m_most);
        }

        std::uint32_t m_mask;
        unsigned m_shift = 0;
        std::uint32_t m_most = 0;                 // the greatest value
        std::array<std::uint8_t, 256> m_scaled{}; // of all values, where they are that few
    };

    template <std::size_t wordBytes>
    void convertWords(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) const;

    enum class Layout : std::uint8_t { bgra, rgba, other } m_layout = Layout::other;
    bool m_is16Bit;
    bool m_hasAlpha;
    std::array<Channel, 4> m_channels; // blue, green, red, alpha
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
