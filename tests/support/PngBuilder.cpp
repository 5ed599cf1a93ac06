#include "support/PngBuilder.h"
#include "coding/deflate/Deflate.h"
#include <algorithm>
#include <array>
#include <cstdlib>

namespace pixkit::test {

namespace {

void put32(Bytes& bytes, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

int paethPredictor(int left, int above, int upperLeft) {
    const int p = left + above - upperLeft;
    const int pa = std::abs(p - left), pb = std::abs(p - above), pc = std::abs(p - upperLeft);
    return pa <= pb && pa <= pc ? left : pb <= pc ? above : upperLeft;
}

// The row filtered; `above` as long as the row.
Bytes filtered(std::uint8_t filter, const Bytes& row, const Bytes& above, std::size_t step) {
    Bytes result = {filter};
    for (std::size_t i = 0; i < row.size(); ++i) {
        const int left = i < step ? 0 : row[i - step];
        const int upperLeft = i < step ? 0 : above[i - step];
        const std::array<int, 5> predictions = {0, left, above[i], (left + above[i]) / 2,
                                                paethPredictor(left, above[i], upperLeft)};
        result.push_back(static_cast<std::uint8_t>(row[i] - (filter < 5 ? predictions[filter] : 0)));
    }
    return result;
}

struct Grid {
    std::size_t y, x, stepY, stepX;
};

void appendPass(Bytes& rows, const PngImage& image, const Samples& samples, const Grid& grid) {
    if (image.width <= grid.x || image.height <= grid.y) return;
    const std::size_t width = (image.width - grid.x + grid.stepX - 1) / grid.stepX;
    Bytes above((width * image.bitsPerPixel() + 7) / 8);
    for (std::size_t y = grid.y, r = 0; y < image.height; y += grid.stepY, ++r) {
        Bytes row(above.size());
        std::size_t bit = 0;
        for (std::size_t x = grid.x; x < image.width; x += grid.stepX) {
            for (std::size_t c = 0; c < image.channels(); ++c) {
                const unsigned sample = samples(x, y, c);
                for (int b = image.bitDepth - 1; b >= 0; --b, ++bit) {
                    row[bit / 8] = static_cast<std::uint8_t>(row[bit / 8] | (sample >> b & 1) << (7 - bit % 8));
                }
            }
        }
        const Bytes stored = filtered(image.filters[r % image.filters.size()], row, above,
                                      std::max<std::size_t>(1, image.bitsPerPixel() / 8));
        rows.insert(rows.end(), stored.begin(), stored.end());
        above = row;
    }
}

} // namespace

std::uint32_t crc32(std::span<const std::uint8_t> bytes) {
    std::uint32_t crc = ~0U;
    for (const std::uint8_t byte : bytes) {
        crc ^= byte;
        for (int i = 0; i < 8; ++i)
            crc = crc >> 1 ^ (0xEDB88320U & (0U - (crc & 1)));
    }
    return ~crc;
}

Bytes filteredRows(const PngImage& image, const Samples& samples) {
    static constexpr std::array<Grid, 7> adam7 = {
        {{0, 0, 8, 8}, {0, 4, 8, 8}, {4, 0, 8, 4}, {0, 2, 4, 4}, {2, 0, 4, 2}, {0, 1, 2, 2}, {1, 0, 2, 1}}};
    Bytes rows;
    if (image.interlace == 0) {
        appendPass(rows, image, samples, {0, 0, 1, 1});
    } else {
        for (const Grid& pass : adam7)
            appendPass(rows, image, samples, pass);
    }
    return rows;
}

Bytes zlibStored(const Bytes& data) {
    Bytes stream;
    deflate::compressZlib(data, 0, stream);
    return stream;
}

PngBuilder& PngBuilder::chunk(std::string_view type, const Bytes& data, Crc crc) {
    put32(m_bytes, static_cast<std::uint32_t>(data.size()));
    const std::size_t start = m_bytes.size();
    m_bytes.insert(m_bytes.end(), type.begin(), type.end());
    m_bytes.insert(m_bytes.end(), data.begin(), data.end());
    const std::uint32_t right = crc32(std::span(m_bytes).subspan(start));
    put32(m_bytes, crc == Crc::right ? right : crc == Crc::wrong ? right ^ 1 : 0);
    return *this;
}

PngBuilder& PngBuilder::IHDR(const PngImage& image, Crc crc) {
    Bytes data;
    put32(data, image.width);
    put32(data, image.height);
    data.insert(data.end(),
                {image.bitDepth, image.colorType, image.compressionMethod, image.filterMethod, image.interlace});
    return chunk("IHDR", data, crc);
}

PngBuilder& PngBuilder::IDAT(const Bytes& stream, std::size_t pieceSize, Crc crc) {
    if (pieceSize == 0) pieceSize = stream.size();
    for (std::size_t at = 0; at < stream.size(); at += pieceSize) {
        const auto piece = std::span(stream).subspan(at, std::min(pieceSize, stream.size() - at));
        chunk("IDAT", Bytes(piece.begin(), piece.end()), crc);
    }
    return *this;
}

PngBuilder& PngBuilder::bytes(const Bytes& raw) {
    m_bytes.insert(m_bytes.end(), raw.begin(), raw.end());
    return *this;
}

Bytes png(const PngImage& image, const Samples& samples, const PngBuilder& before) {
    return png(image, filteredRows(image, samples), before);
}

Bytes png(const PngImage& image, const Bytes& rows, const PngBuilder& before) {
    constexpr std::ptrdiff_t signature = 8;
    return PngBuilder()
        .IHDR(image)
        .bytes(Bytes(before.data().begin() + signature, before.data().end()))
        .IDAT(zlibStored(rows))
        .IEND();
}

} // namespace pixkit::test
