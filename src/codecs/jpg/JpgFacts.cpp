// What the segments of a JPEG file (ITU-T T.81, Annex B) tell up to its first scan.
#include "codecs/FileNotes.h"
#include "codecs/PictureFacts.h"
#include "codecs/jpg/JpgQuantisation.h"
#include "coding/ByteReader.h"
#include "coding/JpegFrame.h"
#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <utility>

namespace pixkit {

namespace {

using Bytes = std::span<const std::uint8_t>;

unsigned word(Bytes bytes, std::size_t at) noexcept {
    const ByteReader reader(bytes);
    return unsigned{reader.byte(at).value_or(0)} << 8 | reader.byte(at + 1).value_or(0);
}

using Divisors = std::array<int, 64>;

// The quality for which the IJG's library makes the table that differs least from this one.
int nearestQuality(const Divisors& divisors) {
    int nearest = 0, least = std::numeric_limits<int>::max();
    for (int quality = 100; quality >= 1; --quality) {
        const JpgQuantisation trial = jpgQuantisation(false, quality);
        int difference = 0;
        for (std::size_t i = 0; i < trial.size(); ++i)
            difference += std::abs(divisors[i] - trial[i]);
        if (difference >= least) continue;
        least = difference;
        nearest = quality;
    }
    return nearest;
}

// What is made of the segments when all have been seen.
struct JpgHeaders {
    PictureFacts facts{FileFormat::jpg};
    std::optional<Divisors> luminance; // of the last such table, as that is the one in use
};

// DQT: tables of 64 divisors each behind a byte that says their size and number. The first one is luminance's.
void readTables(Bytes data, std::optional<Divisors>& luminance) {
    while (!data.empty()) {
        const bool is16Bit = data[0] >> 4 != 0;
        const std::size_t bytes = is16Bit ? 128 : 64;
        if (data.size() <= bytes) return;
        if ((data[0] & 15) == 0) {
            Divisors& divisors = luminance.emplace();
            for (std::size_t i = 0; i < divisors.size(); ++i)
                divisors[i] = is16Bit ? static_cast<int>(word(data, 1 + i * 2)) : data[1 + i];
        }
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
    facts.height = static_cast<std::int32_t>(word(data, 1));
    facts.width = static_cast<std::int32_t>(word(data, 3));
    facts.color = data[5] == 1 ? "gray" : data[5] == 4 ? "CMYK" : "YCbCr";
    if (marker > arithmetic) {
        facts.coding = kind == 2 ? "progressive, arithmetic" : "arithmetic";
    } else {
        facts.coding = kind == 2 ? "progressive" : kind == 3 ? "lossless" : "";
    }
    facts.sampling = samplingOf(data.subspan(6));
}

// APP0, where it is JFIF's.
void readJfif(const JpegSegments& segment, PictureFacts& facts) {
    const Bytes data = segment.data();
    if (!segment.isNamed("JFIF") || data.size() < 12) return;
    constexpr PictureDensity::Unit units[] = {PictureDensity::Unit::none, PictureDensity::Unit::inch,
                                              PictureDensity::Unit::centimetre};
    if (data[7] < std::size(units)) facts.density = PictureDensity{word(data, 8), word(data, 10), units[data[7]]};
}

void readSegment(const JpegSegments& segment, JpgHeaders& headers) {
    constexpr std::uint8_t app0 = 0xE0, dqt = 0xDB;
    const std::uint8_t marker = segment.marker();
    if (marker == dqt) readTables(segment.data(), headers.luminance);
    if (marker == app0) readJfif(segment, headers.facts);
    if (JpegFrame::isHeader(marker, segment.data())) readFrameHeader(marker, segment.data(), headers.facts);
    noteSegment(segment, headers.facts.notes);
}

// Reads the segments up to the first scan, a part of the file at a time, which has room for any of them. Where the
// codes of the scan begin; nothing where there is none.
std::optional<std::uint64_t> readSegments(HeaderSource& file, JpgHeaders& headers) {
    constexpr std::size_t part = 128 * 1024;
    constexpr std::array<std::uint8_t, 2> soi = {0xFF, 0xD8};
    for (std::uint64_t position = 0;;) {
        auto bytes = file.read(position, part);
        if (position != 0) std::ranges::copy(soi, bytes.begin()); // over what was read, so that it is a file again
        JpegSegments segments(bytes);
        while (segments.next()) {
            readSegment(segments, headers);
            if (segments.marker() == JpegSegments::sos) return position + segments.end();
        }
        const std::size_t walked = segments.end() - soi.size();
        if (bytes.size() < part || walked == 0) return {};
        position += walked;
    }
}

// From the end, where the marker is in whole files; a block has a byte of the one behind it, which may be half of it.
bool endsEarly(HeaderSource& file, std::uint64_t scan) {
    constexpr std::uint64_t block = 65536;
    for (std::uint64_t end = file.size();;) {
        const std::uint64_t start = end - std::min(block, end - scan);
        if (!endsJpegEarly(file.read(start, static_cast<std::size_t>(end - start)), 0)) return false;
        if (start == scan) return true;
        end = start + 1;
    }
}

} // namespace

std::optional<PictureFacts> readJpgFacts(HeaderSource& file) {
    if (file.size() > std::numeric_limits<std::int32_t>::max()) throw std::runtime_error("the file cannot be read");
    JpgHeaders headers;
    const auto scan = readSegments(file, headers);
    PictureFacts& facts = headers.facts;
    if (!scan || facts.width == 0 || facts.height == 0) return {};
    facts.notes.endsEarly = endsEarly(file, *scan);
    if (facts.notes.hasProfile) facts.profile = "unnamed";
    if (headers.luminance) facts.quality = nearestQuality(*headers.luminance);
    return std::move(facts);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
