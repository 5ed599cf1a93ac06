// What a PNG file says of its picture beside the pixels (PNG standard, 11.3): its texts and density are kept, of the
// rest it is noted that it was there.
#pragma once
#include "surface/PictureNotes.h"
#include "surface/PngProperties.h"
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace pixkit {

class PngNotes {
  public:
    // Texts beyond these bounds are left out as damaged ones are: bytes of one, in the file and in UTF-8, bytes of all
    // with what was inflated in vain, their number.
    static constexpr std::size_t mostOfText = 1U << 20, mostOfTexts = 2U << 20, mostTexts = 1000;

    // A chunk: its type, its type and data, and the CRC behind them. What a wrong CRC belongs to is left out; one of 0
    // is not looked at.
    void take(std::uint32_t type, std::span<const std::uint8_t> typeAndData, std::uint32_t crc);

    PictureNotes notes() const noexcept;
    // Null where there are none.
    std::shared_ptr<const PngProperties> properties() const noexcept { return m_properties; }

    std::optional<std::uint32_t> gamma() const noexcept { return m_gamma; } // times 100,000
    bool hasPixels() const noexcept { return m_hasPixels; }                 // IDAT

  private:
    bool takeText(std::uint32_t type, std::span<const std::uint8_t> data);
    std::optional<std::string> inflated(std::span<const std::uint8_t> stream);
    PngProperties& changedProperties();

    PictureNotes m_notes;
    std::optional<std::uint32_t> m_gamma;
    bool m_hasOtherPrimaries = false; // than sRGB
    bool m_isSrgb = false;
    std::uint32_t m_frames = 0;
    bool m_isPictureFrame = false, m_hasPixels = false;
    std::size_t m_texts = 0, m_textBytes = 0;
    std::shared_ptr<PngProperties> m_properties;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
