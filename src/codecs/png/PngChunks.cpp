#include "codecs/png/PngChunks.h"
#include "codecs/png/PngChunkType.h"
#include "coding/Crc32.h"
#include "coding/deflate/Deflate.h"
#include "shared/Colors.h"
#include <algorithm>
#include <stdexcept>

namespace pixkit {

namespace {

unsigned grayBits(const PngForm& form, unsigned gray) noexcept {
    return gray * ((1U << form.bitDepth) - 1) / 255;
}

// Lines end with a line feed in the file, whatever they ended with.
std::string withLineFeeds(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
        result.push_back(text[i] == '\r' ? '\n' : text[i]);
    }
    return result;
}

// The text as a zlib stream, when it is long and that is shorter.
std::vector<std::uint8_t> compressedText(const std::string& text) {
    constexpr std::size_t worthTrying = 256;
    if (text.size() < worthTrying) return {};
    const std::vector<std::uint8_t> bytes(text.begin(), text.end());
    std::vector<std::uint8_t> stream;
    deflate::compressZlib(bytes, deflate::smallestLevel, stream);
    if (stream.size() >= bytes.size()) stream.clear();
    return stream;
}

// What tEXt may hold: printable characters of Latin-1 and line feeds (PNG standard, 11.3.4.3).
bool isPlainLatin1(const std::string& latin1) noexcept {
    return std::ranges::all_of(latin1, [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte == '\n' || (byte >= 32 && byte <= 126) || byte >= 161;
    });
}

void writeText(PngChunkWriter& out, const PngProperties::Text& entry) {
    const std::string keyword = latin1Of(entry.keyword).value_or("");
    const std::string utf8 = withLineFeeds(entry.value);
    const auto latin1 = latin1Of(utf8);
    const bool isLatin1 = latin1 && isPlainLatin1(*latin1);
    const std::string& text = isLatin1 ? *latin1 : utf8;
    const std::vector<std::uint8_t> stream = compressedText(text);
    const bool isCompressed = !stream.empty();

    out.begin(!isLatin1 ? "iTXt" : isCompressed ? "zTXt" : "tEXt");
    out.text(keyword);
    out.byte(0);
    if (!isLatin1) out.byte(isCompressed ? 1 : 0);
    if (!isLatin1 || isCompressed) out.byte(0); // compression method
    if (!isLatin1) out.bigEndian16(0);          // neither a language nor a translated keyword
    if (isCompressed) {
        out.bytes(stream);
    } else {
        out.text(text);
    }
    out.end();
}

} // namespace

PngChunkWriter::PngChunkWriter(std::vector<std::uint8_t>& file) : ByteWriter(file) {
    text("\x89PNG\r\n\x1A\n");
}

void PngChunkWriter::begin(std::string_view type) {
    m_start = size();
    bigEndian32(0); // the length, when it is known
    text(type);
}

void PngChunkWriter::end() {
    const std::size_t length = size() - m_start - pngChunkHead;
    if (length > 0x7FFFFFFF) throw std::length_error("a chunk takes no more than 2 GiB");
    bigEndian32At(m_start, length);
    bigEndian32(crc32(0, std::span(target()).subspan(m_start + 4)));
}

void pngWritePalette(PngChunkWriter& out, const PngForm& form) {
    if (form.palette.empty()) return;
    out.begin("PLTE");
    for (const PngPixel stored : form.palette) {
        const PngPixel color = pngStraight(stored);
        out.byte(color >> 16);
        out.bigEndian16(color);
    }
    out.end();
}

void pngWriteTransparency(PngChunkWriter& out, const PngForm& form) {
    if (form.clearColor) {
        out.begin("tRNS");
        if (form.colorType == PngColorType::gray) {
            out.bigEndian16(grayBits(form, (*form.clearColor)[0]));
        } else {
            for (const std::uint8_t sample : *form.clearColor)
                out.bigEndian16(sample);
        }
        out.end();
    }
    // Translucent entries are the first of a palette; those that are not given are opaque.
    if (form.palette.empty() || form.palette.front() >> 24 == 255) return;
    out.begin("tRNS");
    for (const PngPixel color : form.palette)
        if (color >> 24 != 255) out.byte(color >> 24);
    out.end();
}

void pngWriteDensity(PngChunkWriter& out, const PngProperties& props) {
    const auto density = props.density();
    if (!density) return;
    out.begin("pHYs");
    out.bigEndian32(static_cast<std::uint32_t>(density->first));
    out.bigEndian32(static_cast<std::uint32_t>(density->second));
    out.byte(1); // pixels in a metre
    out.end();
}

void pngWriteBackground(PngChunkWriter& out, const PngForm& form, const PngProperties& props) {
    const auto color = props.backgroundColor();
    if (!color) return;
    const ColorChannels channels = iparseColorChannels(*color);
    out.begin("bKGD");
    switch (form.colorType) {
    case PngColorType::palette: // the form was chosen with this colour in it
        out.byte(
            form.indexes->indexOf(0xFF000000U | PngPixel{channels.r} << 16 | PngPixel{channels.g} << 8 | channels.b));
        break;
    case PngColorType::gray:
    case PngColorType::grayAlpha:
        out.bigEndian16(grayBits(form, channels.g));
        break;
    default:
        out.bigEndian16(channels.r);
        out.bigEndian16(channels.g);
        out.bigEndian16(channels.b);
    }
    out.end();
}

void pngWriteTime(PngChunkWriter& out, const PngProperties& props) {
    if (!props.lastModified()) return;
    const PngTime& time = *props.lastModified();
    out.begin("tIME");
    out.bigEndian16(time.year);
    for (const std::uint8_t part : {time.month, time.day, time.hour, time.minute, time.second})
        out.byte(part);
    out.end();
}

void pngWriteTexts(PngChunkWriter& out, const PngProperties& props) {
    for (const PngProperties::Text* text : props.texts())
        writeText(out, *text);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
