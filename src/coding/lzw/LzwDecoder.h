// The LZW codes of GIF files (GIF89a, appendix F).
#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace pixkit::platform {

// The smallest and the greatest number of bits that a GIF may give its indexes. Above 8 only the low 8 bits of an index
// count.
inline constexpr unsigned lzwSmallestCodeSize = 1;
inline constexpr unsigned lzwGreatestCodeSize = 11;

// The indexes of a picture, one byte each, in the order in which they are coded.
class LzwPixels {
  public:
    // Decodes `count` indexes; codes behind them are not looked at. Empty when the codes end too early, by their end
    // or by their end code, when one stands for no string yet, or when the code size is none. Throws std::bad_alloc,
    // but takes no memory for more indexes than so many codes can describe.
    LzwPixels(std::span<const std::uint8_t> codes, unsigned codeSize, std::size_t count);

    explicit operator bool() const noexcept { return m_pixels != nullptr; }
    const std::uint8_t* data() const noexcept { return m_pixels; }

  private:
    std::unique_ptr<std::uint8_t[]> m_memory;
    const std::uint8_t* m_pixels = nullptr;
};

} // namespace pixkit::platform
