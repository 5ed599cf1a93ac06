// What the markers of a JPEG file (ITU-T T.81) say of its picture.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace pixkit {

// Goes over the segments of a JPEG file up to the header of the first scan, which is the last of them.
class JpegSegments {
  public:
    static constexpr std::uint8_t sos = 0xDA, exif = 0xE1, profile = 0xE2; // markers: the scan, APP1, APP2

    explicit JpegSegments(std::span<const std::uint8_t> file) noexcept;
    // Moves on; false where no whole segment follows.
    bool next() noexcept;
    std::uint8_t marker() const noexcept { return m_marker; }
    std::span<const std::uint8_t> data() const noexcept { return m_data; }
    // Where the segment ends in the file; behind the last one, how far the bytes were looked at.
    std::size_t end() const noexcept { return m_at; }
    // Whether the data begins with a name and the zero that ends it.
    bool isNamed(std::string_view name) const noexcept;

  private:
    std::span<const std::uint8_t> m_file, m_data;
    std::size_t m_at = 2;
    std::uint8_t m_marker = 0;
};

struct JpegFrame {
    std::int32_t width = 0, height = 0;
    int components = 0;
    bool isArithmetic = false;
    bool hasAdobeMarker = false; // its CMYK is stored inverted
    // Bytes of the coefficients, 2 for each, where a decoder has to hold those of the whole picture, because a scan
    // does not bring all that there is of a block or of a pixel; else 0.
    std::uint64_t coefficientBytes = 0;

    // Whether a segment is a frame header with as much data as every one has.
    static bool isHeader(std::uint8_t marker, std::span<const std::uint8_t> data) noexcept;
};

// Of the file up to the first scan; nothing where there is no frame header before that.
std::optional<JpegFrame> readJpegFrame(std::span<const std::uint8_t> file) noexcept;

// Whether there is no end of the image behind the first scan, whose header ends at `scan`.
bool endsJpegEarly(std::span<const std::uint8_t> file, std::size_t scan) noexcept;

// Whether a decoder may be asked for the picture of the file: a store holds it, the data can describe at least half of
// it, and its scans do not ask for more work than its bytes pay for.
bool isInProportion(const JpegFrame& frame, std::span<const std::uint8_t> file) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
