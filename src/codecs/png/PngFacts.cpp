// What the chunks of a PNG file tell. The reader walks over them as in a load, only that the image data is not there.
#include "codecs/PictureFacts.h"
#include "codecs/png/PngChunkType.h"
#include "codecs/png/cPNGparser.h"
#include "coding/ByteReader.h"
#include "shared/Text.h"
#include <algorithm>

namespace pixkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

// The file without the payloads of image data, and without those that are larger than what anybody looks at.
Bytes withoutPixels(HeaderSource& file) {
    constexpr std::size_t signatureBytes = 8, mostOfChunk = 4U << 20, mostOfAll = 32U << 20;
    Bytes rest = file.read(0, signatureBytes);
    for (std::uint64_t position = signatureBytes;;) {
        const Bytes head = file.read(position, pngChunkHead);
        const std::uint64_t length = ByteReader(head).bigEndian32(0).value_or(0);
        const std::uint32_t type = ByteReader(head).bigEndian32(4).value_or(0);
        const bool isThere = head.size() == pngChunkHead && position + length + pngChunkOverhead <= file.size();
        const bool isData = type == pngChunkType("IDAT") || type == pngChunkType("fdAT");
        if (isThere && (isData || length > mostOfChunk || rest.size() + length > mostOfAll)) {
            rest.insert(rest.end(), 4, 0);
            rest.insert(rest.end(), head.begin() + 4, head.end());
            rest.insert(rest.end(), 4, 0);
        } else {
            const Bytes chunk =
                file.read(position, pngChunkHead + (isThere ? static_cast<std::size_t>(length) + 4 : 0));
            rest.insert(rest.end(), chunk.begin(), chunk.end());
        }
        if (!isThere || type == pngChunkType("IEND") || rest.size() > mostOfAll * 2) return rest;
        position += length + pngChunkOverhead;
    }
}

// What no load looks at.
void readChunk(std::uint32_t type, const ByteReader& data, PictureFacts& facts) {
    switch (type) {
    case pngChunkType("pHYs"): {
        using Unit = PictureDensity::Unit;
        const std::uint32_t x = data.bigEndian32(0).value_or(0), y = data.bigEndian32(4).value_or(0);
        facts.density = PictureDensity{x, y, data.byte(8) == 1 ? Unit::metre : Unit::none};
        break;
    }
    case pngChunkType("iCCP"):
        for (std::size_t i = 0; i < 79 && data.byte(i).value_or(0) != 0; ++i)
            facts.profile.push_back(static_cast<char>(*data.byte(i)));
        facts.profile = facts.profile.empty() ? "unnamed" : utf8Of(facts.profile);
        break;
    case pngChunkType("fcTL"): {
        constexpr std::uint32_t perSecond = 1000, usualDenominator = 100;
        const auto word = [&](std::size_t at) {
            return std::uint32_t{data.byte(at).value_or(0)} << 8 | data.byte(at + 1).value_or(0);
        };
        facts.delays.push_back(word(20) * perSecond / (word(22) == 0 ? usualDenominator : word(22)));
        break;
    }
    default:
        break;
    }
}

} // namespace

// False where a load would fail before it comes to the pixels.
bool cPNGparser::readHeaders(std::span<const std::uint8_t> Stream, PictureFacts& facts) {
    if (!IsPNG(Stream)) return false;
    m_pngStream = Stream;
    if (!walkChunks(RunningEnd::ofFile, ChunksRead::butIDAT)) return false;
    if (m_Width == 0 || !isDepthSuited() || !m_notes.hasPixels()) return false;
    constexpr const char* colors[] = {"gray", "", "RGB", "palette", "gray and alpha", "", "RGB and alpha"};
    facts.width = m_Width;
    facts.height = m_Height;
    facts.alpha = alphaOfChunks();
    facts.type = imgPNG;
    facts.depth = m_BitDepth;
    facts.color = colors[m_ColorType];
    facts.coding = m_Interlacing == 1 ? "interlaced" : "";
    facts.notes = m_notes.notes();
    facts.notes.has16Bits = m_BitDepth == 16;
    facts.frames = facts.notes.moreFrames + 1;
    facts.properties = m_notes.properties();
    constexpr double gammaUnits = 100000;
    if (m_notes.gamma()) facts.gamma = *m_notes.gamma() / gammaUnits;
    return true;
}

std::optional<PictureFacts> readPngFacts(HeaderSource& file) {
    const Bytes rest = withoutPixels(file);
    cPNGparser parser;
    PictureFacts facts{FileFormat::png};
    if (!parser.readHeaders(rest, facts)) return {};
    const ByteReader reader(rest);
    for (std::size_t at = 8; reader.slice(at, pngChunkHead);) {
        const std::size_t length = reader.bigEndian32(at).value_or(0);
        const auto data = reader.slice(at + pngChunkHead, length);
        if (!data) break; // the last one, whose length may lead anywhere in 32 bits
        readChunk(reader.bigEndian32(at + 4).value_or(0), ByteReader(*data), facts);
        at += length + pngChunkOverhead;
    }
    return facts;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
