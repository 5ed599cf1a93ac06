// What the segments of a JPEG file (ITU-T T.81, Annex B) tell up to its first scan.
#include "codecs/FileNotes.h"
#include "codecs/PictureFacts.h"
#include "codecs/jpg/JpgQuantisation.h"
#include "coding/ByteReader.h"
#include "coding/JpegFrame.h"
#include <algorithm>
#include <cstdlib>
#include <limits>

namespace pixkit {

namespace {

using Bytes = std::span<const std::uint8_t>;

unsigned word(Bytes bytes, std::size_t at) noexcept {
    const ByteReader reader(bytes);
    return unsigned{reader.byte(at).value_or(0)} << 8 | reader.byte(at + 1).value_or(0);
}

// The quality for which the IJG's library makes the table that differs least from this one.
int nearestQuality(Bytes table, bool is16Bit) {
    int nearest = 0, least = std::numeric_limits<int>::max();
    for (int quality = 100; quality >= 1; --quality) {
        const JpgQuantisation trial = jpgQuantisation(false, quality);
        int difference = 0;
        for (std::size_t i = 0; i < trial.size(); ++i) {
            const unsigned divisor = is16Bit ? word(table, i * 2) : table[i];
            difference += std::abs(static_cast<int>(divisor) - trial[i]);
        }
        if (difference >= least) continue;
        least = difference;
        nearest = quality;
    }
    return nearest;
}

// DQT: tables of 64 divisors each behind a byte that says their size and number. The first one is luminance's.
void readTables(Bytes data, PictureFacts& facts) {
    while (!data.empty()) {
        const bool is16Bit = data[0] >> 4 != 0;
        const std::size_t bytes = is16Bit ? 128 : 64;
        if (data.size() <= bytes) return;
        if ((data[0] & 15) == 0) facts.quality = nearestQuality(data.subspan(1, bytes), is16Bit);
        data = data.subspan(bytes + 1);
    }
}

std::string samplingOf(Bytes components) {
    const auto factors = [&](std::size_t i) { return unsigned{components[i * 3 + 1]}; };
    if (components.size() < 9 || factors(1) != 0x11 || factors(2) != 0x11) return {};
    switch (factors(0)) {
    case 0x11:
        return "4:4:4";
    case 0x21:
        return "4:2:2";
    case 0x22:
        return "4:2:0";
    case 0x12:
        return "4:4:0";
    case 0x41:
        return "4:1:1";
    case 0x42:
        return "4:1:0";
    default:
        return std::to_string(factors(0) >> 4) + "x" + std::to_string(factors(0) & 15) + ",1x1,1x1";
    }
}

void readFrameHeader(std::uint8_t marker, Bytes data, PictureFacts& facts) {
    constexpr std::uint8_t arithmetic = 0xC8;
    const unsigned kind = marker & 3U;
    facts.depth = data[0];
    facts.color = data[5] == 1 ? "gray" : data[5] == 4 ? "CMYK" : "YCbCr";
    if (marker > arithmetic) {
        facts.coding = kind == 2 ? "progressive, arithmetic" : "arithmetic";
    } else {
        facts.coding = kind == 2 ? "progressive" : kind == 3 ? "lossless" : "";
    }
    facts.sampling = samplingOf(data.subspan(6));
}

// As much of the file as has the segments up to the scan.
std::vector<std::uint8_t> readSegments(HeaderSource& file, std::size_t& scan) {
    constexpr std::size_t first = 65536;
    for (std::size_t count = first;; count *= 4) {
        auto start = file.read(0, count);
        for (JpegSegments segments(start); segments.next();)
            if (segments.marker() == JpegSegments::sos) scan = segments.end();
        if (scan != 0 || start.size() < count) return start;
    }
}

// Two bytes at the end, unless something stands behind them.
bool endsEarly(HeaderSource& file, std::size_t scan) {
    constexpr std::size_t usual = 65536;
    const std::uint64_t behind = file.size() - scan;
    const auto last = std::min<std::uint64_t>(behind, usual);
    if (!endsJpegEarly(file.read(file.size() - last, static_cast<std::size_t>(last)), 0)) return false;
    return last == behind || endsJpegEarly(file.read(scan, static_cast<std::size_t>(behind)), 0);
}

} // namespace

std::optional<PictureFacts> readJpgFacts(HeaderSource& file) {
    std::size_t scan = 0;
    const auto start = readSegments(file, scan);
    const auto frame = readJpegFrame(start);
    if (!frame || scan == 0 || frame->width == 0 || frame->height == 0) return {};
    PictureFacts facts{FileFormat::jpg, frame->width, frame->height};
    facts.notes = notesOf(start);
    facts.notes.endsEarly = endsEarly(file, scan);
    if (facts.notes.hasProfile) facts.profile = "unnamed";
    for (JpegSegments segments(start); segments.next();) {
        constexpr std::uint8_t app0 = 0xE0, dqt = 0xDB;
        const Bytes data = segments.data();
        if (segments.marker() == dqt) readTables(data, facts);
        if (JpegFrame::isHeader(segments.marker(), data)) readFrameHeader(segments.marker(), data, facts);
        if (segments.marker() != app0 || !segments.isNamed("JFIF") || data.size() < 12) continue;
        constexpr PictureDensity::Unit units[] = {PictureDensity::Unit::none, PictureDensity::Unit::inch,
                                                  PictureDensity::Unit::centimetre};
        if (data[7] < std::size(units)) facts.density = PictureDensity{word(data, 8), word(data, 10), units[data[7]]};
    }
    return facts;
}

} // namespace pixkit
