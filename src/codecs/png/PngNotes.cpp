#include "codecs/png/PngNotes.h"
#include "codecs/png/PngChunkType.h"
#include "coding/ByteReader.h"
#include "coding/Crc32.h"
#include "coding/ExifOrientation.h"
#include "coding/deflate/Inflate.h"
#include "shared/Text.h"
#include <algorithm>
#include <limits>
#include <string_view>

namespace pixkit {

namespace {

using Data = std::span<const std::uint8_t>;

// Up to a byte of 0, which is taken off the data with it; nothing where there is none.
std::optional<std::string_view> takeName(Data& data) noexcept {
    const auto end = std::ranges::find(data, std::uint8_t{0});
    if (end == data.end()) return {};
    const auto length = static_cast<std::size_t>(end - data.begin());
    const std::string_view name(reinterpret_cast<const char*>(data.data()), length);
    data = data.subspan(length + 1);
    return name;
}

std::string_view textOf(Data data) noexcept {
    return {reinterpret_cast<const char*>(data.data()), data.size()};
}

// Whether eight numbers, times 100,000, are the white and the primaries of sRGB, as near as programs write them.
bool areSrgbPrimaries(Data data) noexcept {
    constexpr std::int64_t ofSrgb[] = {31270, 32900, 64000, 33000, 30000, 60000, 15000, 6000};
    constexpr std::int64_t tolerance = 1000;
    const ByteReader reader(data);
    for (std::size_t i = 0; i < std::size(ofSrgb); ++i) {
        const std::int64_t value = reader.bigEndian32(i * 4).value_or(0);
        if (value < ofSrgb[i] - tolerance || value > ofSrgb[i] + tolerance) return false;
    }
    return true;
}

// Near 1 / 2.2, which is what pixels without a gamma are taken for.
bool isSrgbGamma(std::uint32_t gamma) noexcept {
    return gamma >= 45000 && gamma <= 46000;
}

} // namespace

void PngNotes::take(std::uint32_t type, Data typeAndData, std::uint32_t crc) {
    const auto data = typeAndData.subspan(4);
    const ByteReader reader(data);
    const auto isWhole = [&] { // and of a size that is worth computing it for
        return data.size() <= mostOfText && (crc == 0 || crc32(0, typeAndData) == crc);
    };
    constexpr std::size_t exifNameBytes = 6;
    switch (type) {
    case pngChunkType("gAMA"):
        m_gamma = reader.bigEndian32(0);
        break;
    case pngChunkType("cHRM"):
        m_hasOtherPrimaries = !areSrgbPrimaries(data);
        break;
    case pngChunkType("sRGB"):
        m_isSrgb = true;
        break;
    case pngChunkType("iCCP"):
    case pngChunkType("cICP"):
        m_notes.hasProfile = true;
        break;
    case pngChunkType("acTL"):
        m_frames = reader.bigEndian32(0).value_or(0);
        break;
    case pngChunkType("fcTL"): // in front of the pixels, it makes a frame of them
        m_isPictureFrame = m_isPictureFrame || !m_hasPixels;
        break;
    case pngChunkType("IDAT"):
        m_hasPixels = true;
        break;
    case pngChunkType("eXIf"): {
        m_notes.hasExif = true;
        if (!isWhole()) break;
        const bool isNamed = textOf(data).starts_with("Exif"); // as in JPEG files, where it does not belong
        m_notes.orientation = exifOrientation(data.subspan(isNamed ? std::min(exifNameBytes, data.size()) : 0));
        break;
    }
    case pngChunkType("pHYs"): {
        constexpr std::uint32_t most = std::numeric_limits<std::int32_t>::max();
        const std::uint32_t x = reader.bigEndian32(0).value_or(0), y = reader.bigEndian32(4).value_or(0);
        const bool isInMetres = reader.byte(8) == 1;
        if (!isInMetres || x < 1 || y < 1 || x > most || y > most || !isWhole()) break;
        changedProperties().set(pngPixelsPerMeterX, static_cast<std::int32_t>(x), {});
        changedProperties().set(pngPixelsPerMeterY, static_cast<std::int32_t>(y), {});
        break;
    }
    case pngChunkType("tEXt"):
    case pngChunkType("zTXt"):
    case pngChunkType("iTXt"):
        if (!isWhole() || !takeText(type, data)) ++m_notes.badTexts;
        break;
    default:
        break;
    }
}

// Whether the text is kept.
bool PngNotes::takeText(std::uint32_t type, Data data) {
    if (m_texts == mostTexts) return false;
    const auto keyword = takeName(data);
    if (!keyword) return false;
    bool isCompressed = type == pngChunkType("zTXt");
    const bool isUtf8 = type == pngChunkType("iTXt");
    if (isUtf8) {
        if (data.empty() || data[0] > 1) return false;
        isCompressed = data[0] == 1;
        data = data.subspan(1);
    }
    if (isUtf8 || isCompressed) { // the method, of which there is one
        if (data.empty() || (isCompressed && data[0] != 0)) return false;
        data = data.subspan(1);
    }
    if (isUtf8 && (!takeName(data) || !takeName(data))) return false; // the language, and the keyword in it
    std::optional<std::string> text = isCompressed ? inflated(data) : std::string(textOf(data));
    if (text && !isUtf8) text = utf8Of(*text);
    if (!text || text->size() > mostOfText) return false;
    if (!isCompressed && text->size() > mostOfTexts - m_textBytes) return false;
    if (!isCompressed) m_textBytes += text->size();
    if (!changedProperties().addText(utf8Of(*keyword), std::move(*text))) return false;
    ++m_texts;
    return true;
}

// Nothing where that is no zlib stream, ends early or becomes too long; what was inflated counts in any case.
std::optional<std::string> PngNotes::inflated(Data stream) {
    const std::size_t most = std::min(mostOfText, mostOfTexts - m_textBytes);
    std::string text;
    for (std::size_t room = std::min(most, stream.size() * 4 + 64);; room = std::min(most, room * 4)) {
        text.resize(room);
        const auto result =
            deflate::inflateZlib(reinterpret_cast<std::uint8_t*>(text.data()), room, stream.data(), stream.size());
        if (result.outcome == deflate::Outcome::outputFull && room < most) continue;
        text.resize(result.written);
        m_textBytes += result.written;
        if (result.outcome == deflate::Outcome::complete) return text;
        return {};
    }
}

PngProperties& PngNotes::changedProperties() {
    if (!m_properties) m_properties = std::make_shared<PngProperties>();
    return *m_properties;
}

PictureNotes PngNotes::notes() const noexcept {
    PictureNotes notes = m_notes;
    const bool isKnown = m_isSrgb || m_notes.hasProfile; // then gamma and primaries are for programs that do not know
    notes.hasGamma = !isKnown && (m_hasOtherPrimaries || (m_gamma && !isSrgbGamma(*m_gamma)));
    const std::uint32_t shown = m_isPictureFrame ? 1 : 0;
    notes.moreFrames = m_frames > shown ? m_frames - shown : 0;
    return notes;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
