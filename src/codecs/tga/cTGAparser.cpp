// Recognition: header, size estimate, footer and extension area.
#include "codecs/tga/cTGAparser.h"
#include "coding/ByteReader.h"
#include "kernels/kernels.h"
#include <algorithm>
#include <optional>
#include <string_view>

namespace pixkit {

namespace {

constexpr std::size_t headerSize = 18;
constexpr std::size_t footerSize = 26;
constexpr std::size_t extensionSize = 495;
constexpr std::size_t attributesTypeOffset = 494;

// Where the footer's signature begins, in any mix of capital and small letters.
std::optional<std::size_t> findSignature(std::span<const std::uint8_t> window) noexcept {
    constexpr std::string_view signature = "TRUEVISION-XFILE.";
    const auto found =
        std::search(window.begin(), window.end(), signature.begin(), signature.end(), [](std::uint8_t byte, char c) {
            return (byte >= 'a' && byte <= 'z' ? byte - 'a' + 'A' : byte) == c;
        });
    if (found == window.end()) return {};
    return static_cast<std::size_t>(found - window.begin());
}

bool hasFooter(std::span<const std::uint8_t> bytes) noexcept {
    return bytes.size() >= footerSize && findSignature(bytes.last(footerSize));
}

// Bytes that hold a pixel, or an entry of a colour map, of this many bits; 0 = there are none such.
constexpr std::size_t bytesOf(std::uint8_t bits) noexcept {
    switch (bits) {
    case 8:
        return 1;
    case 15:
    case 16:
        return 2;
    case 24:
        return 3;
    case 32:
        return 4;
    default:
        return 0;
    }
}

} // namespace

ReadResult cTGAparser::LoadStream(std::span<const std::uint8_t> inStream, cPixSheet& cHost, std::size_t streamOffset) {
    m_stream = inStream;
    m_streamOffset = streamOffset;
    if (!isTGA()) {
        // Only a footer tells that it was meant to be one.
        const bool isMeant = hasFooter(inStream);
        return isMeant ? ReadResult::damaged(m_reason) : ReadResult::otherFormat(m_reason);
    }
    return m_header.isColorMapped() ? ProcessColorMap(cHost) : ProcessTrueColor(cHost);
}

ReadResult cTGAparser::LoadFile(PictureSource& File, cPixSheet& cHost) {
    const bool mayBeTGA = readHeader(File.start(headerSize)) || hasFooter(File.end(footerSize));
    return mayBeTGA ? LoadStream(File.bytes(), cHost, 0) : ReadResult::otherFormat(m_reason);
}

// Always false.
bool cTGAparser::refuse(Reason reason) noexcept {
    m_reason = reason;
    return false;
}

// Whether the header makes sense. Fields that are not there are 0.
bool cTGAparser::readHeader(std::span<const std::uint8_t> start) noexcept {
    const ByteReader reader(start);
    const auto byte = [&](std::size_t at) { return reader.byte(at).value_or(0); };
    const auto word = [&](std::size_t at) { return reader.littleEndian16(at).value_or(0); };
    m_header = {byte(0), byte(1), byte(2), word(3), word(5), byte(7), word(12), word(14), byte(16), byte(17)};
    const Header& header = m_header;

    constexpr std::array<std::uint8_t, 6> imageTypes = {1, 2, 3, 9, 10, 11};
    if (std::ranges::count(imageTypes, header.imageType) == 0) return refuse("TGA: no type of image that is read");
    if (header.width < 1 || header.height < 1) return refuse("TGA: no columns or no rows");
    const std::size_t bytesPerPixel = bytesOf(header.depth);
    if (bytesPerPixel == 0 || (header.isColorMapped() && (bytesPerPixel != 1 || header.colorMapType != 1))) {
        return refuse("TGA: no depth that is read, or indexes without a colour map");
    }
    m_mapBytes = 0;
    if (header.colorMapType == 1) { // any other value but 1 says that there is no map, whatever the fields declare
        const std::size_t bytesPerEntry = bytesOf(header.entrySize);
        if (bytesPerEntry == 0 || header.mapLength < 1)
            return refuse("TGA: no entries of the colour map that are read");
        // The first index counts as entries that are there, because ProcessColorMap passes over as many.
        m_mapBytes = (std::size_t{header.firstEntry} + header.mapLength) * bytesPerEntry;
    }
    return true;
}

// The format has no signature at its beginning: the header must make sense, and the picture it speaks of must fit.
bool cTGAparser::isTGA() noexcept {
    const ByteReader reader(m_stream);
    if (reader.size() <= headerSize) return refuse("TGA: too short for a header");
    if (!readHeader(m_stream)) return false;
    const Header& header = m_header;
    const std::size_t bytesPerPixel = bytesOf(header.depth);
    const std::size_t dataOffset = headerSize + header.idLength + m_mapBytes;
    std::uint64_t expectedSize = dataOffset;
    if (!header.isRunLength()) expectedSize += std::uint64_t{header.width} * header.height * bytesPerPixel;
    if (reader.size() > 23 && findSignature(m_stream.last(22))) expectedSize += footerSize;
    if (expectedSize > reader.size()) return refuse("TGA: too short for its picture");
    m_pixelData = m_stream.subspan(dataOffset);
    return true;
}

// Whether alpha may be taken from the file: yes, unless an extension area says otherwise.
bool cTGAparser::AllowAlphaChannel() const noexcept {
    if (m_stream.size() <= 43) return true;
    const auto window = m_stream.last(29);
    const auto signature = findSignature(window);
    if (!signature || *signature < 8) return true;
    const auto area = static_cast<std::int32_t>(ByteReader(window).littleEndian32(*signature - 8).value_or(0));
    // The stream's place in the caller's array counts on one side only, so an area near the end of a picture that is
    // embedded far inside an array is not looked at: such pictures have always kept their alpha.
    const std::uint64_t areaEnd = std::uint64_t{m_streamOffset} + static_cast<std::uint32_t>(area) + extensionSize;
    if (area < 1 || areaEnd >= m_stream.size()) return true;
    const ByteReader reader(m_stream);
    const auto start = static_cast<std::size_t>(area);
    if (reader.littleEndian16(start) != extensionSize) return true;
    return reader.byte(start + attributesTypeOffset).value_or(0) > 2; // 3 = alpha, 4 = premultiplied alpha
}

ReadResult cTGAparser::ProcessTrueColor(cPixSheet& cHost) {
    bool hasAlpha = m_header.depth == 32;
    if (m_header.depth == 16 && (m_header.descriptor & 31) != 0) hasAlpha = AllowAlphaChannel();
    return buildSurface(cHost, {bytesOf(m_header.depth), hasAlpha, grayLookup.data()});
}

ReadResult cTGAparser::ProcessColorMap(cPixSheet& cHost) {
    // The entries are those that end where the pixels begin, and fill the palette from 0: what a first index above 0
    // means differs from program to program, and pictures made for this reader are laid out this way.
    const std::size_t bytesPerEntry = bytesOf(m_header.entrySize);
    const std::size_t entries = std::min<std::size_t>(m_header.mapLength, 256); // more cannot be meant by an index
    const std::uint8_t* map = m_pixelData.data() - m_header.mapLength * bytesPerEntry;
    // Unlike for pixels of 16 bits, the descriptor's count of alpha bits is not asked: it is about the indexes.
    const bool hasAlpha = (m_header.entrySize == 16 || m_header.entrySize == 32) && AllowAlphaChannel();

    Lookup palette{}; // an index beyond the map is transparent black, or black where there is no alpha
    TgaLayout{bytesPerEntry, hasAlpha, grayLookup.data()}.convert(palette.data(), map, entries);
    if (!hasAlpha) kernels::table().setOpaque(palette.data(), 256);
    return buildSurface(cHost, {1, hasAlpha, palette.data()});
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
