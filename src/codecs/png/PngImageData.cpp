// From compressed data to the host: the data is inflated in pieces, whose rows become pixels while the cache has them.
#include "codecs/png/PngChunkType.h"
#include "codecs/png/PngFilters.h"
#include "codecs/png/cPNGparser.h"
#include "coding/ByteReader.h"
#include "coding/RowBytes.h"
#include "coding/deflate/Inflate.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <cstring>

namespace pixkit {

using deflate::farthestCopy;

// What is inflated waits in a window until its rows are in the host. Rows are unfiltered where they are, but not as
// long as the stream may copy from them; and the row above stays.
class cPNGparser::ImageData final : public deflate::Pieces {
  public:
    explicit ImageData(cPNGparser& parser)
        : m_parser(parser), m_total(parser.CalcUncompressedWidth()), m_capacity(parser.windowBytes()),
          m_window(std::make_unique_for_overwrite<std::uint8_t[]>(m_capacity)), m_chunkAt(parser.m_firstIDAT) {
        beginPass();
    }

    std::span<const std::uint8_t> moreInput() noexcept override;
    deflate::Room moreRoom(std::uint8_t* next) noexcept override;
    // Takes what is left of `written` bytes in all. Rows that are not there are zero.
    void finish(std::size_t written) noexcept;
    // The host could not be made ready for the picture.
    bool hasFailed() const noexcept { return m_hasFailed; }

  private:
    void takeRows(std::size_t end) noexcept;
    void takeRow(std::size_t end) noexcept;
    void unfilterRow(std::size_t end) noexcept;
    void beginPass() noexcept;
    void dropUntil(std::size_t place) noexcept;
    std::size_t room() const noexcept { return std::min(m_total - m_dropped, m_capacity) - m_filled; }

    cPNGparser& m_parser;
    const std::size_t m_total; // bytes of all rows
    const std::size_t m_capacity;
    const std::unique_ptr<std::uint8_t[]> m_window;
    std::size_t m_filled = 0, m_dropped = 0; // bytes that are in the window, and that were before them
    std::size_t m_chunkAt;                   // the chunk that comes next
    PixelView m_host;                        // empty before the first row
    bool m_hasFailed = false;

    // The row that comes next; it and the one below may be unfiltered already.
    std::size_t m_pass = 0, m_row = 0;
    bool m_isUnfiltered = false, m_isNextUnfiltered = false;
    std::size_t m_columns = 0, m_rows = 0, m_rowBytes = 0; // of the pass; without the filter byte
    std::size_t m_rowAt = 0, m_aboveAt = 0; // in the window, with it; where there is none above, both are one
};

// The walk over the chunks has found them whole.
std::span<const std::uint8_t> cPNGparser::ImageData::moreInput() noexcept {
    const ByteReader reader(m_parser.m_pngStream);
    while (true) {
        const std::size_t length = reader.bigEndian32(m_chunkAt).value_or(0);
        const auto type = reader.bigEndian32(m_chunkAt + 4);
        if (!type || type == pngChunkType("IEND")) return {};
        const auto data = reader.slice(m_chunkAt + pngChunkHead, length);
        m_chunkAt += length + pngChunkOverhead;
        if (type == pngChunkType("IDAT") && length != 0 && data) return *data;
    }
}

deflate::Room cPNGparser::ImageData::moreRoom(std::uint8_t* next) noexcept {
    if (next != nullptr) {
        m_filled = static_cast<std::size_t>(next - m_window.get());
        const std::size_t settled = m_filled - std::min(m_filled, farthestCopy);
        takeRows(settled);
        if (m_hasFailed) return {next, next, next, true};
        const bool isAllTaken = m_pass == m_parser.m_MatrixDat().size(); // data may go on, and is dropped
        dropUntil(isAllTaken ? settled : std::min(settled, m_aboveAt));
    }
    std::uint8_t* const begin = m_window.get();
    const bool isLast = m_total - m_dropped <= m_capacity;
    return {begin, begin + m_filled, begin + m_filled + room(), isLast};
}

void cPNGparser::ImageData::finish(std::size_t written) noexcept {
    m_filled = written - m_dropped;
    takeRows(m_filled);
    while (!m_hasFailed && m_pass < m_parser.m_MatrixDat().size()) {
        dropUntil(m_aboveAt);
        const std::size_t bytes = room();
        std::memset(m_window.get() + m_filled, 0, bytes);
        m_filled += bytes;
        takeRows(m_filled);
    }
}

// All rows that end before a place in the window.
void cPNGparser::ImageData::takeRows(std::size_t end) noexcept {
    while (m_pass < m_parser.m_MatrixDat().size() && m_rowAt + 1 + m_rowBytes <= end) {
        if (m_host.bits == nullptr) {
            m_hasFailed = m_hasFailed || !m_parser.beginPicture();
            if (m_hasFailed) return;
            m_host = HostAccess::pixels(*m_parser.cHost);
        }
        takeRow(end);
    }
}

void cPNGparser::ImageData::takeRow(std::size_t end) noexcept {
    const InterlacePass& pass = m_parser.m_MatrixDat()[m_pass];
    if (!m_isUnfiltered) unfilterRow(end);
    m_isUnfiltered = m_isNextUnfiltered;
    m_isNextUnfiltered = false;
    m_parser.convertRow(m_host.rowFromTop(pass.startRow + m_row * pass.rowStep), &m_window[m_rowAt + 1], m_columns,
                        pass);
    m_aboveAt = m_rowAt;
    m_rowAt += 1 + m_rowBytes;
    if (++m_row < m_rows) return;
    ++m_pass;
    beginPass();
}

// Paeth's filter in two rows that follow upon each other is undone at once, which takes hardly longer than one.
void cPNGparser::ImageData::unfilterRow(std::size_t end) noexcept {
    const std::size_t step = m_parser.GetDepthInfo().rawBytesPP, stored = 1 + m_rowBytes;
    std::uint8_t* const raw = &m_window[m_rowAt + 1];
    const std::uint8_t* const above = m_aboveAt != m_rowAt ? &m_window[m_aboveAt + 1] : nullptr;
    const auto isPaeth = [](std::uint8_t filter) { return PngFilterType{filter} == PngFilterType::paeth; };
    const bool isNextThere = m_row + 1 < m_rows && m_rowAt + 2 * stored <= end;
    if (above != nullptr && isPaeth(raw[-1]) && isNextThere && isPaeth(raw[m_rowBytes])) {
        DecodeFilter_Paeth(raw, raw + stored, above, m_rowBytes, step);
        m_isNextUnfiltered = true;
    } else {
        decodeFilter(raw[-1], raw, above, m_rowBytes, step);
    }
}

// Passes without columns or rows have no data.
void cPNGparser::ImageData::beginPass() noexcept {
    const auto passes = m_parser.m_MatrixDat();
    for (; m_pass < passes.size(); ++m_pass) {
        m_columns = passes[m_pass].columns(static_cast<std::size_t>(m_parser.m_Width));
        m_rows = passes[m_pass].rows(static_cast<std::size_t>(m_parser.m_Height));
        if (m_columns != 0 && m_rows != 0) break;
    }
    m_rowBytes = m_parser.GetBytesPerPixel(m_columns);
    m_row = 0;
    m_aboveAt = m_rowAt;
}

void cPNGparser::ImageData::dropUntil(std::size_t place) noexcept {
    std::memmove(m_window.get(), m_window.get() + place, m_filled - place);
    m_filled -= place;
    m_dropped += place;
    m_rowAt -= place; // of no use any more behind the last row
    m_aboveAt -= place;
}

// False without a picture.
bool cPNGparser::PostLoadPNG() {
    if (m_lenIDAT == 0) return refuse("IDAT is missing");
    if (m_Width == 0) return refuse("IHDR is missing");
    if (!isDepthSuited()) return refuse("IHDR: the depth does not suit the colour type");
    ImageData data(*this);
    // The built-in decoder first, as the faster one; and alone, as it takes all that zlib takes and gives the same
    // bytes.
    const auto [outcome, written] = deflate::inflatePieces(data);
    if (data.hasFailed()) return false;
    if (outcome == deflate::Outcome::damaged) return refuse("IDAT: the compressed data is damaged");
    // Of a picture without a single row there is nothing to show.
    if (written < firstRowBytes()) return refuse("IDAT: the data ends before the first row does");
    data.finish(written);
    if (data.hasFailed()) return false;
    setAlpha();
    setNotes(written < neededBytes());
    HostAccess::ImageType(*cHost, imgPNG);
    return true;
}

// Makes the host and what conversion needs ready, once there is a row; false when there is no memory.
bool cPNGparser::beginPicture() {
    InitializePalette();
    if (!cHost->InitializeDIB(m_Width, m_Height)) {
        m_outcome = ReadOutcome::unable;
        return refuse(noMemoryForPixels);
    }
    prepareConversion();
    return true;
}

bool cPNGparser::isDepthSuited() const noexcept {
    switch (m_ColorType) {
    case 0:
        return true;
    case 3:
        return m_BitDepth <= 8;
    default:
        return m_BitDepth >= 8;
    }
}

cPNGparser::DepthInfo cPNGparser::GetDepthInfo() const noexcept {
    constexpr std::array<std::uint8_t, 7> samplesOfColorType = {1, 0, 3, 1, 2, 0, 4};
    const std::size_t rawBitsPP = std::size_t{samplesOfColorType[m_ColorType]} * m_BitDepth;
    return {rawBitsPP, std::max<std::size_t>(1, rawBitsPP / 8)};
}

std::size_t cPNGparser::GetBytesPerPixel(std::size_t totalWidth) const noexcept {
    return static_cast<std::size_t>(packedRowBytes(totalWidth, GetDepthInfo().rawBitsPP));
}

// Bytes of the first filtered row, which of an interlaced picture is that of the first pass.
std::size_t cPNGparser::firstRowBytes() const noexcept {
    const InterlacePass& pass = m_MatrixDat().front();
    return GetBytesPerPixel(pass.columns(static_cast<std::size_t>(m_Width))) + 1;
}

// Bytes of the filtered rows that a file has, one filter byte each: of a pass without columns none.
std::size_t cPNGparser::neededBytes() const noexcept {
    std::size_t size = CalcUncompressedWidth();
    for (const InterlacePass& pass : m_MatrixDat())
        if (pass.columns(static_cast<std::size_t>(m_Width)) == 0) size -= pass.rows(static_cast<std::size_t>(m_Height));
    return size;
}

// Bytes of the filtered rows, one filter byte each. A pass without columns still counts a byte for each of its rows;
// that makes the buffer a little larger than needed.
std::size_t cPNGparser::CalcUncompressedWidth() const noexcept {
    std::size_t size = 0;
    for (const InterlacePass& pass : m_MatrixDat())
        size += pass.rows(static_cast<std::size_t>(m_Height)) *
                (GetBytesPerPixel(pass.columns(static_cast<std::size_t>(m_Width))) + 1);
    return size;
}

// Bytes that inflating takes besides the host: all where that is little; else a row and the one above it, what copies
// may take, and as much again as fits the cache.
std::size_t cPNGparser::windowBytes() const noexcept {
    constexpr std::size_t inCache = std::size_t{192} << 10, leastSteps = std::size_t{64} << 10;
    const std::size_t rowBytes = GetBytesPerPixel(static_cast<std::size_t>(m_Width)) + 1;
    return std::min(CalcUncompressedWidth(), std::max(inCache, 2 * rowBytes + farthestCopy + leastSteps));
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
