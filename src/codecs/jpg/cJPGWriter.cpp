#include "codecs/jpg/cJPGWriter.h"
#include "codecs/jpg/JpgQuantisation.h"
#include "codecs/jpg/JpgScan.h"
#include "coding/ByteWriter.h"
#include "kernels/kernels.h"
#include "shared/Colors.h"
#include <algorithm>
#include <cstring>
#include <vector>

namespace pixkit {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::int32_t leastQualityOfFullChroma = 90;
constexpr std::size_t blockSide = 8;

// The picture's rows from the top, opaque.
class Rows {
  public:
    Rows(ConstPixelView image, bool hasAlpha, std::int32_t fillColor) : m_image(image) {
        const auto [b, g, r] = iparseColorChannels(fillColor);
        m_fill = {b, g, r};
        if (hasAlpha) m_flattened.resize(image.width * 4);
    }
    // Good until the next call; rows below the last are the last again.
    const std::uint8_t* operator[](std::size_t y) {
        const std::uint8_t* row = m_image.rowFromTop(std::min(y, m_image.height - 1));
        if (m_flattened.empty()) return row;
        kernels::table().flatten32(m_flattened.data(), row, m_image.width, m_fill.data());
        return m_flattened.data();
    }
    bool areGray() {
        for (std::size_t y = 0; y < m_image.height; ++y) {
            const std::uint8_t* row = (*this)[y];
            unsigned differences = 0;
            for (std::size_t i = 0; i < m_image.width * 4; i += 4)
                differences |= static_cast<unsigned>(row[i] ^ row[i + 1]) | static_cast<unsigned>(row[i] ^ row[i + 2]);
            if (differences != 0) return false;
        }
        return true;
    }
    std::size_t width() const noexcept { return m_image.width; }
    std::size_t height() const noexcept { return m_image.height; }

  private:
    ConstPixelView m_image;
    std::array<std::uint8_t, 3> m_fill{};
    Bytes m_flattened; // one row; empty for a picture without alpha
};

// The samples of one component for one row of MCUs.
struct Component {
    std::size_t kind;  // of its tables: 0 luminance, 1 chrominance
    std::size_t ratio; // blocks an MCU has of it in each direction: 1 or 2
    std::size_t stride;
    Bytes samples;
    std::int32_t lastDc = 0;
    // Of the MCUs that are transformed together, row of blocks after row of blocks.
    std::vector<std::int16_t> coefficients;
    std::vector<std::uint64_t> nonzero;
};

class Encoder {
  public:
    Encoder(Rows& rows, std::int32_t quality);
    Bytes encode();

  private:
    static constexpr std::size_t mcusAtOnce = 16; // their coefficients stay in the fastest cache

    void convertMcuRow(std::size_t firstRow);
    void scanMcus(std::size_t firstRow, std::size_t first, std::size_t count);
    Bytes makeFile() const;

    Rows& m_rows;
    bool m_isGray, m_halvesChroma;
    std::size_t m_mcuSide; // pixels
    std::size_t m_mcusInRow;
    std::size_t m_paddedWidth;
    std::vector<Component> m_components; // Y, Cb, Cr; Y alone for grays
    Bytes m_fullChroma[2];               // rows of Cb and Cr before they are halved
    std::array<JpgQuantisation, JpgScan::kinds> m_quantisation;
    std::array<kernels::BlockQuantiser, JpgScan::kinds> m_quantisers{};
    JpgScan m_scan;
};

Encoder::Encoder(Rows& rows, std::int32_t quality)
    : m_rows(rows), m_isGray(rows.areGray()), m_halvesChroma(!m_isGray && quality < leastQualityOfFullChroma),
      m_mcuSide(m_halvesChroma ? 2 * blockSide : blockSide), m_mcusInRow((rows.width() + m_mcuSide - 1) / m_mcuSide),
      m_paddedWidth(m_mcusInRow * m_mcuSide) {
    for (std::size_t kind = 0; kind < JpgScan::kinds; ++kind) {
        m_quantisation[kind] = jpgQuantisation(kind == 1, quality);
        m_quantisers[kind] = jpgBlockQuantiser(m_quantisation[kind]);
    }
    for (std::size_t i = 0; i < (m_isGray ? 1U : 3U); ++i) {
        Component part{i == 0 ? std::size_t{0} : 1, i == 0 && m_halvesChroma ? std::size_t{2} : 1, 0, {}, 0, {}, {}};
        part.stride = m_mcusInRow * part.ratio * blockSide;
        part.samples.resize(part.stride * part.ratio * blockSide);
        part.coefficients.resize(mcusAtOnce * part.ratio * part.ratio * 64);
        part.nonzero.resize(mcusAtOnce * part.ratio * part.ratio);
        m_components.push_back(std::move(part));
    }
    if (m_halvesChroma) {
        for (Bytes& rowPair : m_fullChroma)
            rowPair.resize(2 * m_paddedWidth);
    }
}

// Fills the samples of all components, the right edge repeated to whole MCUs.
void Encoder::convertMcuRow(std::size_t firstRow) {
    const auto& kernel = kernels::table();
    const std::size_t width = m_rows.width();
    const auto pad = [&](std::uint8_t* samples) {
        std::memset(samples + width, samples[width - 1], m_paddedWidth - width);
    };
    for (std::size_t y = 0; y < m_mcuSide; ++y) {
        const std::uint8_t* pixels = m_rows[firstRow + y];
        std::uint8_t* luma = m_components[0].samples.data() + y * m_paddedWidth;
        if (m_isGray) {
            for (std::size_t x = 0; x < width; ++x)
                luma[x] = pixels[4 * x];
            pad(luma);
            continue;
        }
        std::uint8_t* chroma[2];
        for (std::size_t i = 0; i < 2; ++i) {
            chroma[i] = m_halvesChroma ? m_fullChroma[i].data() + y % 2 * m_paddedWidth
                                       : m_components[1 + i].samples.data() + y * m_paddedWidth;
        }
        kernel.toYCbCr(luma, chroma[0], chroma[1], pixels, width);
        pad(luma);
        pad(chroma[0]);
        pad(chroma[1]);
        if (!m_halvesChroma || y % 2 == 0) continue;
        for (std::size_t i = 0; i < 2; ++i) {
            Component& part = m_components[1 + i];
            kernel.halveSamples(part.samples.data() + y / 2 * part.stride, m_fullChroma[i].data(), chroma[i],
                                part.stride);
        }
    }
}

void Encoder::scanMcus(std::size_t firstRow, std::size_t first, std::size_t count) {
    for (Component& part : m_components) {
        const std::size_t blocks = count * part.ratio;
        for (std::size_t row = 0; row < part.ratio; ++row) {
            kernels::table().transformBlocks(
                part.coefficients.data() + row * blocks * 64, part.nonzero.data() + row * blocks,
                part.samples.data() + row * blockSide * part.stride + first * part.ratio * blockSide, part.stride,
                blocks, m_quantisers[part.kind]);
        }
    }
    for (std::size_t mcu = 0; mcu < count; ++mcu) {
        for (Component& part : m_components) {
            for (std::size_t row = 0; row < part.ratio; ++row) {
                for (std::size_t column = 0; column < part.ratio; ++column) {
                    const std::size_t block = (row * count + mcu) * part.ratio + column;
                    const std::size_t x = ((first + mcu) * part.ratio + column) * blockSide;
                    const std::size_t y = firstRow + row * blockSide;
                    // Nobody sees what is in a block outside of the picture. The one before it, without its details,
                    // costs least. (With chroma halved that is luminance: of chrominance an MCU has one block.)
                    if (part.ratio > 1 && (x >= m_rows.width() || y >= m_rows.height())) {
                        part.coefficients[block * 64] = static_cast<std::int16_t>(part.lastDc);
                        part.nonzero[block] = 0;
                    }
                    m_scan.addBlock(part.coefficients.data() + block * 64, part.nonzero[block], part.kind, part.lastDc);
                }
            }
        }
    }
}

// --- the file: markers and what stands behind them (T.81, Annex B)

enum Marker : std::uint8_t { SOF0 = 0xC0, DHT = 0xC4, SOI = 0xD8, EOI = 0xD9, SOS = 0xDA, DQT = 0xDB, APP0 = 0xE0 };

class MarkerWriter : public ByteWriter {
  public:
    using ByteWriter::ByteWriter;

    void marker(Marker marker) {
        byte(0xFF);
        byte(marker);
    }
    // A marker and the length of what follows, which counts itself.
    void beginSegment(Marker kind, std::size_t length) {
        marker(kind);
        bigEndian16(2 + length);
    }
};

Bytes Encoder::makeFile() const {
    const std::size_t kindsUsed = m_isGray ? 1 : JpgScan::kinds;
    Bytes file;
    MarkerWriter out(file);
    out.marker(SOI);
    // JFIF 1.02, square pixels of no stated size, no thumbnail.
    constexpr std::array<std::uint8_t, 14> jfif = {'J', 'F', 'I', 'F', 0, 1, 2, 0, 0, 1, 0, 1, 0, 0};
    out.beginSegment(APP0, jfif.size());
    out.bytes(jfif);
    for (std::size_t kind = 0; kind < kindsUsed; ++kind) {
        out.beginSegment(DQT, 1 + m_quantisation[kind].size());
        out.byte(kind);
        out.bytes(m_quantisation[kind]);
    }
    out.beginSegment(SOF0, 6 + 3 * m_components.size());
    out.byte(8); // bits a sample
    out.bigEndian16(m_rows.height());
    out.bigEndian16(m_rows.width());
    out.byte(m_components.size());
    for (std::size_t i = 0; i < m_components.size(); ++i) {
        out.byte(i + 1);
        out.byte(m_components[i].ratio * 0x11); // horizontally and vertically
        out.byte(m_components[i].kind);
    }
    for (std::size_t kind = 0; kind < kindsUsed; ++kind) {
        for (const std::size_t isAc : {0U, 1U}) {
            const JpgHuffmanTable table = m_scan.table(kind, isAc != 0);
            out.beginSegment(DHT, 1 + table.countOfLength.size() + table.symbols.size());
            out.byte(isAc << 4 | kind);
            out.bytes(table.countOfLength);
            out.bytes(table.symbols);
        }
    }
    out.beginSegment(SOS, 4 + 2 * m_components.size());
    out.byte(m_components.size());
    for (std::size_t i = 0; i < m_components.size(); ++i) {
        out.byte(i + 1);
        out.byte(m_components[i].kind * 0x11); // DC and AC tables
    }
    out.bytes({0, 63, 0}); // all coefficients, whole: what baseline demands
    m_scan.write(file);
    out.marker(EOI);
    return file;
}

Bytes Encoder::encode() {
    for (std::size_t y = 0; y < m_rows.height(); y += m_mcuSide) {
        convertMcuRow(y);
        for (std::size_t first = 0; first < m_mcusInRow; first += mcusAtOnce)
            scanMcus(y, first, std::min(mcusAtOnce, m_mcusInRow - first));
    }
    return makeFile();
}

} // namespace

WrittenFile cJPGWriter::SaveAsJPG(const SourcePicture& Picture, const JpgOptions& Options) {
    const ConstPixelView image = Picture.pixels;
    if (!image) return refused(noImage);
    if (!fits(image)) return refused("a JPEG file holds no more than 65,500 columns or rows");
    Rows rows(image, Picture.isToBeFlattened(), Options.TransparentFillColor);
    return FileParts(Encoder(rows, std::clamp(Options.Quality, 1, 100)).encode());
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
