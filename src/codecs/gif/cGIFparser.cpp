// From the data to a GIF of the first frame alone.
#include "codecs/gif/cGIFparser.h"
#include "codecs/gif/GifCodes.h"
#include "coding/ByteReader.h"
#include "platform/pictures.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <exception>
#include <limits>
#include <stdexcept>
#include <string_view>

namespace pixkit {

using namespace std::string_view_literals;

namespace {

constexpr std::size_t screenEnd = 13;        // signature and logical screen descriptor
constexpr std::size_t descriptorLength = 10; // of an image
constexpr std::size_t controlLength = 8;     // graphic control extension
constexpr std::size_t packedInDescriptor = 9;

// A packed byte that announces a colour table holds the logarithm of its number of entries, less one.
constexpr bool hasColorTable(std::uint8_t packed) noexcept {
    return (packed & 0x80) != 0;
}
constexpr std::size_t colorsOf(std::uint8_t packed) noexcept {
    return std::size_t{2} << (packed & 7);
}

// In capitals or not.
bool hasGifSignature(std::span<const std::uint8_t> data) noexcept {
    const auto lower = [](std::uint8_t byte) {
        return static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte);
    };
    return data.size() >= 6 && (std::ranges::equal(data.first(6), "gif89a"sv, {}, lower) ||
                                std::ranges::equal(data.first(6), "gif87a"sv, {}, lower));
}

} // namespace

bool cGIFparser::LoadStream(std::span<const std::uint8_t> inStream, cPixSheet& cHost) {
    c_GIFdata = inStream;
    const bool parsed = ParseGIF(cHost);
    c_GIFdata = {};
    return parsed;
}

std::uint8_t cGIFparser::at(std::size_t position) const {
    const auto byte = ByteReader(c_GIFdata).byte(position);
    if (!byte) throw std::out_of_range("subscript out of range");
    return *byte;
}

bool cGIFparser::ParseGIF(cPixSheet& cHost) {
    if (!hasGifSignature(c_GIFdata)) return false;
    try {
        const std::uint8_t packed = at(10);
        gHeaderLen = screenEnd;
        if (hasColorTable(packed)) {
            gColorsUsed = colorsOf(packed);
            gHeaderLen += 3 * gColorsUsed;
        }
        if (!findFirstImage(gHeaderLen) || g87aStop - g87aStart < 3 || gColorsUsed == 0) return false;

        // A frame without pixels, or with more than a store can hold, is not worth asking the loader.
        const ByteReader data(c_GIFdata);
        const std::uint64_t width = data.littleEndian16(g87aStart + 5).value_or(0);
        const std::uint64_t height = data.littleEndian16(g87aStart + 7).value_or(0);
        if (width * height == 0 || width * height * 4 > std::numeric_limits<std::int32_t>::max()) return false;
        if (!platform::refusesIncompleteGif() &&
            !codesFillImage(c_GIFdata.subspan(m_codeSizeAt + 1), at(m_codeSizeAt), width * height))
            return false;

        buildFrame();
        if (transUsed) grayFrameTable();
        return ConvertGIFto32bpp(transUsed ? m_transIndex : -1, aLocalTbl ? g87aStart + descriptorLength : screenEnd,
                                 cHost);
    } catch (const std::exception&) {
        cHost.DestroyDIB();
        return true; // true although nothing was loaded: callers look at the host
    }
}

// Walks the blocks up to the first image and finds out where that ends. False for a block that is none.
bool cGIFparser::findFirstImage(std::size_t Ptr) {
    constexpr std::uint8_t extension = 0x21, image = 0x2C, application = 0xFF, graphicControl = 0xF9;
    for (std::uint8_t introducer = at(Ptr); introducer != image; introducer = at(Ptr)) {
        if (introducer == 0) {
            ++Ptr;
            continue;
        }
        if (introducer != extension) return false;
        const std::size_t label = Ptr + 1;
        switch (at(label)) {
        case application:
            Ptr = label + at(label + 1) + 1 + 1; // its fixed block, whose length it names
            SkipGifBlock(Ptr);
            break;
        case graphicControl: // its length is fixed, whatever it says itself
            transUsed = (at(label + 2) & 1) != 0;
            if (transUsed) m_transIndex = at(label + 5);
            g89aStart = Ptr;
            Ptr = label + 7;
            break;
        default: // comment, plain text
            Ptr = label + 1;
            SkipGifBlock(Ptr);
        }
    }
    g87aStart = Ptr;
    Ptr += packedInDescriptor;
    const std::uint8_t packed = at(Ptr);
    if (hasColorTable(packed)) {
        aLocalTbl = true;
        gColorsUsed = colorsOf(packed);
        Ptr += 3 * gColorsUsed;
    }
    m_codeSizeAt = Ptr + 1; // behind the packed byte or the table
    Ptr += 2;
    SkipGifBlock(Ptr);
    g87aStop = Ptr - 1;
    return true;
}

// Goes behind a chain of sub-blocks: each begins with its length, and one of length 0 ends them.
void cGIFparser::SkipGifBlock(std::size_t& Ptr) const {
    for (std::uint8_t length = at(Ptr); length != 0; length = at(Ptr))
        Ptr += length + std::size_t{1};
    ++Ptr;
}

// Header and global table, the control extension if there was one, the image, the trailer.
void cGIFparser::buildFrame() {
    constexpr std::uint8_t trailer = 0x3B;
    const auto append = [this](std::size_t from, std::size_t count) {
        const auto part = c_GIFdata.subspan(from, count);
        c_GIFframe.insert(c_GIFframe.end(), part.begin(), part.end());
    };
    append(0, gHeaderLen);
    std::ranges::copy("GIF89a"sv, c_GIFframe.begin()); // as every loader knows it
    if (g89aStart != 0) {
        const std::size_t control = c_GIFframe.size();
        append(g89aStart, controlLength);
        // Its length and its end are what the walk has taken them for; a loader would believe other values.
        c_GIFframe[control + 2] = 4;
        c_GIFframe[control + 7] = 0;
    }
    const std::size_t descriptor = c_GIFframe.size();
    const std::size_t table = aLocalTbl ? g87aStart + descriptorLength : screenEnd;
    append(g87aStart, descriptorLength);
    m_frameColors = gColorsUsed;
    m_frameTable = aLocalTbl ? c_GIFframe.size() : screenEnd;
    // Codes that can name more indexes than there are colours get a table with room for all, black where the file has
    // none: what a loader shows for indexes without a colour may be anything, memory that is not its own included.
    const bool needsRoom = at(m_codeSizeAt) >= 8 ? gColorsUsed < 256 : gColorsUsed < std::size_t{1} << at(m_codeSizeAt);
    if (needsRoom) {
        std::uint8_t& packed = c_GIFframe[descriptor + packedInDescriptor];
        packed = static_cast<std::uint8_t>(packed | 0x87); // a local table of 256
        m_frameColors = 256;
        m_frameTable = c_GIFframe.size();
        append(table, 3 * gColorsUsed);
        c_GIFframe.resize(m_frameTable + 3 * m_frameColors);
    } else if (aLocalTbl) {
        append(table, 3 * gColorsUsed);
    }
    append(m_codeSizeAt, g87aStop - m_codeSizeAt + 1);
    c_GIFframe.push_back(trailer);
}

// Makes entry i of the frame's table the gray (i, i, i), so that the decoded picture tells each pixel's index whatever
// depth it comes in. Entry 0 keeps its colour, unless that is one of the grays: then it becomes black, which none is.
void cGIFparser::grayFrameTable() {
    std::uint8_t* const table = c_GIFframe.data() + m_frameTable;
    for (std::size_t i = 1; i < m_frameColors; ++i)
        std::fill_n(table + 3 * i, 3, static_cast<std::uint8_t>(i));
    const bool isGray = table[0] == table[1] && table[1] == table[2];
    if (isGray && table[0] < m_frameColors) std::fill_n(table, 3, std::uint8_t{0});
}

} // namespace pixkit
