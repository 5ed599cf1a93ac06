// From the data to a GIF of the first frame alone.
#include "codecs/gif/cGIFparser.h"
#include "codecs/SystemLimits.h"
#include "surface/cPixSheet.h"
#include <algorithm>
#include <exception>
#include <limits>
#include <stdexcept>
#include <string_view>

namespace pixkit {

using namespace std::string_view_literals;

namespace {

bool fitsStore(const GifFrame& frame) noexcept {
    return std::uint64_t{frame.width} * frame.height * 4 <= std::numeric_limits<std::int32_t>::max();
}

} // namespace

ReadResult cGIFparser::LoadStream(std::span<const std::uint8_t> inStream, cPixSheet& cHost) {
    c_GIFdata = inStream;
    try {
        return ParseGIF(cHost);
    } catch (const std::out_of_range&) {
        return ReadResult::damaged("GIF: the data ends where a colour is looked for");
    } catch (const std::exception& error) {
        return ReadResult::failed(error, ReadOutcome::unable);
    }
}

ReadResult cGIFparser::ParseGIF(cPixSheet& cHost) {
    const GifWalk walk = findGifFrame(c_GIFdata, m_frame);
    if (walk == GifWalk::endsEarly) return ReadResult::damaged("GIF: the data ends before the first image does");
    if (walk == GifWalk::refused) return ReadResult::damaged("GIF: a block that is none");
    // A frame without pixels or colours, or with more than a store can hold, is not worth asking the loader.
    if (m_frame.gColorsUsed == 0) return ReadResult::damaged("GIF: no colours");
    if (m_frame.width == 0 || m_frame.height == 0 || !fitsStore(m_frame))
        return ReadResult::damaged("GIF: no pixels, or more than an image can hold");
    if (const Reason limit = gifLimit(cHost, m_frame, c_GIFdata.size())) return ReadResult::forbidden(limit);

    buildFrame();
    if (m_frame.TransIndex) grayFrameTable();
    return ConvertGIFto32bpp(cHost);
}

bool cGIFparser::goesToSystem(std::span<const std::uint8_t> file) noexcept {
    GifFrame frame;
    findGifFrame(file, frame);
    return fitsStore(frame) && areGifColorsComplete(file);
}

// Header and global table, the control extension if there was one, the image, the trailer.
void cGIFparser::buildFrame() {
    constexpr std::uint8_t trailer = 0x3B;
    const auto append = [this](std::size_t from, std::size_t count) {
        const auto part = c_GIFdata.subspan(from, count);
        c_GIFframe.insert(c_GIFframe.end(), part.begin(), part.end());
    };
    append(0, m_frame.gHeaderLen);
    std::ranges::copy("GIF89a"sv, c_GIFframe.begin()); // as every loader knows it
    if (m_frame.g89aStart != 0) {
        const std::size_t control = c_GIFframe.size();
        append(m_frame.g89aStart, GifFrame::controlLength);
        // Its length and its end are what the walk has taken them for; a loader would believe other values.
        c_GIFframe[control + 2] = 4;
        c_GIFframe[control + 7] = 0;
    }
    const std::size_t descriptor = c_GIFframe.size();
    append(m_frame.g87aStart, GifFrame::descriptorLength);
    m_frameColors = m_frame.gColorsUsed;
    m_frameTable = m_frame.aLocalTbl ? c_GIFframe.size() : GifFrame::screenEnd;
    // Codes that can name more indexes than there are colours get a table with room for all, black where the file has
    // none: what a loader shows for indexes without a colour may be anything, memory that is not its own included.
    const std::size_t colorsNamed = std::size_t{1} << std::min<unsigned>(c_GIFdata[m_frame.codeSizeAt], 8);
    if (m_frame.gColorsUsed < colorsNamed) {
        std::uint8_t& packed = c_GIFframe[descriptor + GifFrame::packedInDescriptor];
        packed = static_cast<std::uint8_t>(packed | 0x87); // a local table of 256
        m_frameColors = 256;
        m_frameTable = c_GIFframe.size();
        append(m_frame.tblOffset, 3 * m_frame.gColorsUsed);
        c_GIFframe.resize(m_frameTable + 3 * m_frameColors);
    } else if (m_frame.aLocalTbl) {
        append(m_frame.tblOffset, 3 * m_frame.gColorsUsed);
    }
    append(m_frame.codeSizeAt, m_frame.g87aStop - m_frame.codeSizeAt + 1);
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
// SPDX-License-Identifier: MIT
