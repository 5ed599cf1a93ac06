#include "codecs/tga/TgaRunLength.h"
#include <algorithm>

namespace pixkit {

namespace {

using FourPixels = std::array<std::uint32_t, 4>;

void store(std::uint8_t* dst, const FourPixels& pixels) noexcept {
    std::memcpy(dst, pixels.data(), sizeof pixels);
}

// The next two write up to three pixels more than asked for.
void fillByFours(std::uint8_t* dst, std::uint32_t pixel, std::size_t count) noexcept {
    const FourPixels pixels = {pixel, pixel, pixel, pixel};
    for (std::size_t i = 0; i < count; i += 4)
        store(dst + i * 4, pixels);
}

// Reads up to three pixels and a byte more, too.
template <std::size_t bytes>
void convertByFours(std::uint8_t* dst, const std::uint8_t* src, std::size_t count, const TgaLayout& layout) noexcept {
    for (std::size_t i = 0; i < count; i += 4, src += 4 * bytes) {
        store(dst + i * 4, {tgaPixel<bytes>(src, layout), tgaPixel<bytes>(src + bytes, layout),
                            tgaPixel<bytes>(src + 2 * bytes, layout), tgaPixel<bytes>(src + 3 * bytes, layout)});
    }
}

// From here on the call of a kernel is worth it.
constexpr std::size_t manyPixels = 32;

} // namespace

// Packets of real pictures are mostly a few pixels long, so what counts is the work for each packet and that branches
// are guessed right. Where data and row leave room, pixels are therefore written four at a time, those beyond a
// packet's end being overwritten by the next one. Returns how many were decoded.
template <std::size_t bytes>
std::size_t TgaRunLength::decodeWholePackets(std::uint8_t* dst, std::size_t width) noexcept {
    constexpr std::size_t mostRead = 1 + (128 + 3) * bytes + 1;
    const std::uint8_t* src = m_data.data();
    const std::uint8_t* const end = src + m_data.size();
    std::size_t x = 0;
    while (static_cast<std::size_t>(end - src) >= mostRead) {
        const std::uint8_t head = *src;
        const std::size_t count = (head & 127U) + 1;
        if (count + 3 > width - x) break;
        std::uint8_t* const out = dst + x * 4;
        x += count;
        ++src;
        if (head >= 128) {
            fillByFours(out, tgaPixel<bytes>(src, m_layout), count);
            src += bytes;
            continue;
        }
        if (count >= manyPixels) {
            m_layout.convert(out, src, count);
        } else {
            convertByFours<bytes>(out, src, count, m_layout);
        }
        src += count * bytes;
    }
    m_data = m_data.subspan(static_cast<std::size_t>(src - m_data.data()));
    return x;
}

// False when the data ends within it.
bool TgaRunLength::openPacket() noexcept {
    if (m_data.empty()) return false;
    const std::uint8_t head = m_data[0];
    m_data = m_data.subspan(1);
    m_left = (head & 127U) + 1;
    m_isRun = head >= 128;
    if (!m_isRun) return true;
    if (m_data.size() < m_layout.bytes) return false;
    m_layout.convert(reinterpret_cast<std::uint8_t*>(&m_runPixel), m_data.data(), 1);
    m_data = m_data.subspan(m_layout.bytes);
    return true;
}

template <std::size_t bytes>
bool TgaRunLength::decodeRow(std::uint8_t* dst, std::size_t width) noexcept {
    for (std::size_t x = 0; x < width;) {
        if (m_left == 0) {
            x += decodeWholePackets<bytes>(dst + x * 4, width - x);
            if (x == width) break;
            if (!openPacket()) return false;
        }
        const std::size_t count = std::min(m_left, width - x);
        if (m_isRun) {
            for (std::size_t i = x; i < x + count; ++i)
                std::memcpy(dst + i * 4, &m_runPixel, 4);
        } else {
            if (m_data.size() < count * bytes) return false;
            m_layout.convert(dst + x * 4, m_data.data(), count);
            m_data = m_data.subspan(count * bytes);
        }
        x += count;
        m_left -= count;
    }
    return true;
}

bool TgaRunLength::nextRow(std::uint8_t* dst, std::size_t width) noexcept {
    switch (m_layout.bytes) {
    case 1:
        return decodeRow<1>(dst, width);
    case 2:
        return decodeRow<2>(dst, width);
    case 3:
        return decodeRow<3>(dst, width);
    default:
        return decodeRow<4>(dst, width);
    }
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
