#include "coding/JpegFrame.h"
#include <algorithm>
#include <cstring>
#include <limits>

namespace pixkit {

namespace {

using Bytes = std::span<const std::uint8_t>;

// A frame header, whose first six bytes are there, behind its length. Components that are not there take no memory.
JpegFrame frameOf(std::uint8_t marker, Bytes segment) noexcept {
    constexpr std::uint8_t jpg = 0xC8;
    constexpr std::size_t firstComponent = 6, bytesOfComponent = 3;
    JpegFrame frame{segment[3] << 8 | segment[4], segment[1] << 8 | segment[2], segment[5], marker > jpg};
    std::uint64_t blocks = 0; // in a unit of the coding, which holds `across` by `down` of the most frequent component
    unsigned across = 1, down = 1;
    for (int i = 0; i < frame.components; ++i) {
        const std::size_t at = firstComponent + static_cast<std::size_t>(i) * bytesOfComponent + 1;
        const unsigned factors = at < segment.size() ? segment[at] : 0U;
        across = std::max(across, factors >> 4);
        down = std::max(down, factors & 15U);
        blocks += std::uint64_t{factors >> 4} * (factors & 15U);
    }
    const auto unitsAlong = [](std::int32_t side, unsigned samples) {
        return (static_cast<std::uint64_t>(side) + samples * 8 - 1) / (std::uint64_t{samples} * 8);
    };
    frame.coefficientBytes = blocks * 64 * 2 * unitsAlong(frame.width, across) * unitsAlong(frame.height, down);
    return frame;
}

// Whether the data can describe at least half of so many pixels, so that a header that lies takes no memory, and not
// more than a store of 31 bits of bytes holds. Every block of 64 takes at least a bit, in arithmetic coding a small
// part of one.
bool canFill(const JpegFrame& frame, std::size_t bytes) noexcept {
    constexpr std::uint64_t mostPixels = std::numeric_limits<std::int32_t>::max() / 4;
    const std::uint64_t pixelsPerByte = frame.isArithmetic ? 16 * 1024 : 1024;
    const auto pixels = static_cast<std::uint64_t>(frame.width) * static_cast<std::uint64_t>(frame.height);
    return pixels != 0 && pixels <= mostPixels && pixels <= pixelsPerByte * bytes;
}

// Whether the work that the scans of a file ask for is in proportion to its bytes. In a progressive file a scan of a
// few bytes goes over all blocks again; a file may have thousands. Those of real programs have ten or so and at least a
// bit for each block, which comes to forty visits of a block for a byte of an empty picture; six times as many are
// allowed, and what takes half a second in any case. Arithmetic decoding takes as long as sixteen visits.
//
// Every pair of bytes that could be a scan's marker counts for one, so that nobody has to walk through the segments
// just as the decoder does; in the codes of a scan the pair does not occur.
bool isWorkInProportion(const JpegFrame& frame, Bytes bytes) noexcept {
    constexpr std::uint64_t visitsPerByte = 256, visitsOfAny = 1U << 26;
    constexpr std::uint64_t mostOfScan = 4; // components
    const std::uint64_t weight = frame.isArithmetic ? 16 : 1;
    const auto blocksAlong = [](std::int32_t side) { return (static_cast<std::uint64_t>(side) + 7) / 8; };
    const std::uint64_t visits = blocksAlong(frame.width) * blocksAlong(frame.height) * weight; // below 2^30
    std::uint64_t left = visitsOfAny + visitsPerByte * bytes.size();
    constexpr std::size_t untilComponents = 4; // from the marker on
    for (std::size_t at = 0; at + untilComponents < bytes.size(); ++at) {
        const void* const found = std::memchr(&bytes[at], 0xFF, bytes.size() - untilComponents - at);
        if (found == nullptr) break;
        at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - bytes.data());
        if (bytes[at + 1] != JpegSegments::sos) continue;
        const std::uint64_t wanted = visits * std::min<std::uint64_t>(bytes[at + untilComponents], mostOfScan);
        if (wanted > left) return false;
        left -= wanted;
    }
    return true;
}

} // namespace

bool isInProportion(const JpegFrame& frame, Bytes file) noexcept {
    return canFill(frame, file.size()) && isWorkInProportion(frame, file);
}

JpegSegments::JpegSegments(Bytes file) noexcept {
    constexpr std::uint8_t soi = 0xD8;
    if (file.size() >= 4 && file[0] == 0xFF && file[1] == soi) m_file = file;
}

bool JpegSegments::next() noexcept {
    constexpr std::uint8_t rst0 = 0xD0, soi = 0xD8, dnl = 0xDC, app0 = 0xE0, app15 = 0xEF, com = 0xFE;
    while (m_at < m_file.size() && m_file.size() - m_at >= 4 && m_marker != sos) {
        if (m_file[m_at] != 0xFF) { // bytes between segments belong to nobody
            ++m_at;
            continue;
        }
        const std::uint8_t marker = m_file[m_at + 1];
        if (marker == 0xFF || marker == 0 || marker == 1 || (marker >= rst0 && marker <= soi)) { // alone, or padding
            m_at += marker == 0xFF ? 1 : 2;
            continue;
        }
        const std::size_t length = std::size_t{m_file[m_at + 2]} << 8 | m_file[m_at + 3];
        const bool isSkipped = marker == com || marker == dnl || (marker >= app0 && marker <= app15);
        if (length < 2 && isSkipped) { // shorter than the length itself: decoders pass over that and go on
            m_at += 4;
            continue;
        }
        if (length < 2 || length > m_file.size() - m_at - 2) return false;
        m_marker = marker;
        m_data = m_file.subspan(m_at + 4, length - 2);
        m_at += 2 + length;
        return true;
    }
    return false;
}

bool JpegSegments::isNamed(std::string_view name) const noexcept {
    return m_data.size() > name.size() && std::equal(name.begin(), name.end(), m_data.begin()) &&
           m_data[name.size()] == 0;
}

bool JpegFrame::isHeader(std::uint8_t marker, Bytes data) noexcept {
    constexpr std::uint8_t dht = 0xC4, jpg = 0xC8, dac = 0xCC;
    return marker >= 0xC0 && marker <= 0xCF && marker != dht && marker != jpg && marker != dac && data.size() >= 6;
}

std::optional<JpegFrame> readJpegFrame(Bytes file) noexcept {
    constexpr std::uint8_t app14 = 0xEE;
    std::optional<JpegFrame> frame;
    bool isAdobe = false, isProgressive = false, isComplete = false; // the first scan, which holds all components
    for (JpegSegments segments(file); segments.next();) {
        const std::uint8_t marker = segments.marker();
        const Bytes segment = segments.data();
        if (marker == JpegSegments::sos) isComplete = frame && !segment.empty() && segment[0] >= frame->components;
        if (marker == app14)
            isAdobe |= segment.size() >= 12 && std::equal(segment.begin(), segment.begin() + 5, "Adobe");
        if (JpegFrame::isHeader(marker, segment)) {
            frame = frameOf(marker, segment);
            isProgressive = (marker & 3) == 2;
        }
    }
    if (!frame) return {};
    frame->hasAdobeMarker = isAdobe;
    if (isComplete && !isProgressive) frame->coefficientBytes = 0;
    return frame;
}

// From the end, where it is in whole files; in the codes of a scan the pair does not occur.
bool endsJpegEarly(Bytes file, std::size_t scan) noexcept {
    constexpr std::uint8_t eoi = 0xD9;
    for (std::size_t at = file.size(); at >= scan + 2; --at)
        if (file[at - 2] == 0xFF && file[at - 1] == eoi) return false;
    return true;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
