// Pixels that drawing works on between source and destination.
#pragma once
#include "shared/PixelView.h"
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

namespace pixkit {

// Owns width * height pixels, four bytes B, G, R, A each, rows bottom-up without padding. Their first content is
// whatever the memory holds. Without pixels, as at first, it counts as empty. Sizes whose bytes 31 bits cannot count
// are refused like a lack of memory: std::bad_alloc.
class PixelBuffer {
  public:
    PixelBuffer() noexcept = default;
    PixelBuffer(std::size_t width, std::size_t height)
        : m_pixels(std::make_unique_for_overwrite<std::uint8_t[]>(byteCount(width, height))), m_width(width),
          m_height(height) {}

    explicit operator bool() const noexcept { return m_pixels != nullptr; }
    std::size_t width() const noexcept { return m_width; }
    std::size_t height() const noexcept { return m_height; }
    PixelView view() noexcept { return {m_pixels.get(), m_width, m_height, m_width * 4}; }
    ConstPixelView view() const noexcept { return {m_pixels.get(), m_width, m_height, m_width * 4}; }

  private:
    static std::size_t byteCount(std::size_t width, std::size_t height) {
        constexpr std::size_t most = std::numeric_limits<std::int32_t>::max() / 4;
        if (width > most || (width > 0 && height > most / width)) throw std::bad_alloc();
        return width * height * 4;
    }

    std::unique_ptr<std::uint8_t[]> m_pixels;
    std::size_t m_width = 0;
    std::size_t m_height = 0;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
