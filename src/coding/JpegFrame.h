// What the markers of a JPEG file (ITU-T T.81) say of its picture.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace pixkit {

struct JpegFrame {
    std::int32_t width = 0, height = 0;
    int components = 0;
    bool isArithmetic = false;
    bool hasAdobeMarker = false; // its CMYK is stored inverted
    // Bytes of the coefficients, 2 for each, where a decoder has to hold those of the whole picture, because a scan
    // does not bring all that there is of a block or of a pixel; else 0.
    std::uint64_t coefficientBytes = 0;
};

// Of the file up to the first scan; nothing where there is no frame header before that.
std::optional<JpegFrame> readJpegFrame(std::span<const std::uint8_t> file) noexcept;

// Whether a decoder may be asked for the picture of the file: a store holds it, the data can describe at least half of
// it, and its scans do not ask for more work than its bytes pay for.
bool isInProportion(const JpegFrame& frame, std::span<const std::uint8_t> file) noexcept;

} // namespace pixkit
