#include "codecs/bmp/BmpMasks.h"
#include "kernels/kernels.h"
#include <bit>
#include <cstring>

namespace pixkit {

BmpMaskedRows::Channel::Channel(std::uint32_t mask, std::uint8_t valueWithoutMask) : m_mask(mask) {
    if (mask == 0) {
        m_scaled[0] = valueWithoutMask;
        return;
    }
    m_shift = static_cast<unsigned>(std::countr_zero(mask));
    m_most = mask >> m_shift; // of a mask with holes too
    for (std::uint32_t value = 0; value <= m_most && value < m_scaled.size(); ++value)
        m_scaled[value] = scale(value);
}

BmpMaskedRows::BmpMaskedRows(const BmpMasks& masks, unsigned bitCount)
    : m_is16Bit(bitCount == 16),
      m_hasAlpha(masks.alpha != 0), m_channels{Channel(masks.blue, 0), Channel(masks.green, 0), Channel(masks.red, 0),
                                               Channel(masks.alpha, 255)} {
    const bool isAlphaLast = masks.alpha == 0xFF000000 || !m_hasAlpha;
    if (m_is16Bit || !isAlphaLast || masks.green != 0xFF00) return;
    if (masks.blue == 0xFF && masks.red == 0xFF0000) m_layout = Layout::bgra;
    if (masks.red == 0xFF && masks.blue == 0xFF0000) m_layout = Layout::rgba;
}

void BmpMaskedRows::convert(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) const {
    const auto& kernel = kernels::table();
    switch (m_layout) {
    case Layout::bgra:
        std::memcpy(dst, src, count * 4);
        break;
    case Layout::rgba:
        kernel.swapRedBlue(dst, src, count);
        break;
    case Layout::other:
        if (m_is16Bit) {
            convertWords<2>(dst, src, count);
        } else {
            convertWords<4>(dst, src, count);
        }
        return;
    }
    if (!m_hasAlpha) kernel.setOpaque(dst, count);
}

template <std::size_t wordBytes>
void BmpMaskedRows::convertWords(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) const {
    for (; count > 0; --count, dst += 4, src += wordBytes) {
        std::uint32_t word = src[0] | std::uint32_t{src[1]} << 8;
        if constexpr (wordBytes == 4) word |= std::uint32_t{src[2]} << 16 | std::uint32_t{src[3]} << 24;
        for (std::size_t channel = 0; channel < 4; ++channel)
            dst[channel] = m_channels[channel].of(word);
    }
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
