#include "codecs/jpg/JpgScan.h"
#include "codecs/jpg/JpgQuantisation.h"
#include <bit>
#include <span>

namespace pixkit {

namespace {

constexpr std::uint32_t endOfBlock = 0x00;
constexpr std::uint32_t sixteenZeros = 0xF0;

struct Magnitude {
    unsigned size;      // the category: how many bits follow
    std::uint32_t bits; // T.81, F.1.2.1: negative numbers lowered by one, in `size` bits
};

Magnitude magnitudeOf(std::int32_t value) noexcept {
    const std::int32_t sign = value >> 31;
    const auto absolute = static_cast<std::uint32_t>((value ^ sign) - sign);
    const auto size = static_cast<unsigned>(std::bit_width(absolute));
    return {size, static_cast<std::uint32_t>(value + sign) & ((1U << size) - 1)};
}

// Puts codes together to bytes, and a zero byte behind every 255.
class BitWriter {
  public:
    explicit BitWriter(std::uint8_t* out) noexcept : m_out(out) {}

    // At most 27 bits.
    void put(std::uint32_t bits, unsigned count) noexcept {
        m_bits = m_bits << count | bits;
        m_count += count;
        if (m_count >= 32) {
            m_count -= 32;
            putWord(static_cast<std::uint32_t>(m_bits >> m_count));
        }
    }
    void finish() noexcept {
        const unsigned padding = (8 - m_count % 8) % 8;
        m_bits = m_bits << padding | ((1U << padding) - 1);
        for (m_count += padding; m_count > 0;) {
            m_count -= 8;
            putByte(static_cast<std::uint8_t>(m_bits >> m_count));
        }
    }
    std::uint8_t* position() const noexcept { return m_out; }
    void position(std::uint8_t* out) noexcept { m_out = out; }

  private:
    void putByte(std::uint8_t byte) noexcept {
        *m_out++ = byte;
        if (byte == 255) *m_out++ = 0;
    }
    void putWord(std::uint32_t word) noexcept {
        // A byte's highest bit is carried away by adding 1 only where it is 255 (or stands above one that is).
        const bool mayHold255 = (word & 0x80808080U & ~(word + 0x01010101U)) != 0;
        if (mayHold255) {
            for (int shift = 24; shift >= 0; shift -= 8)
                putByte(static_cast<std::uint8_t>(word >> shift));
            return;
        }
        for (int i = 0; i < 4; ++i)
            m_out[i] = static_cast<std::uint8_t>(word >> (24 - 8 * i));
        m_out += 4;
    }

    std::uint8_t* m_out;
    std::uint64_t m_bits = 0; // the low m_count of them are still to be written
    unsigned m_count = 0;     // below 32 between calls
};

} // namespace

JpgScan::JpgScan() {
    beginChunk();
}

void JpgScan::beginChunk() {
    if (!m_chunks.empty()) m_chunks.back().count = chunkTokens - m_room;
    Chunk chunk{std::make_unique_for_overwrite<Token[]>(chunkTokens)};
    m_next = chunk.tokens.get();
    m_chunks.push_back(std::move(chunk));
    m_room = chunkTokens;
}

void JpgScan::addBlock(const std::int16_t* coefficients, std::uint64_t nonzero, std::size_t kind,
                       std::int32_t& lastDc) {
    if (m_room < mostTokensOfBlock) beginChunk();
    Token* next = m_next;
    const auto add = [&](std::uint32_t table, std::uint32_t symbol, std::uint32_t bits) {
        ++m_frequencies[table][symbol];
        *next++ = (table << 8 | symbol) << 16 | bits;
    };
    const auto dcTable = static_cast<std::uint32_t>(2 * kind);
    const std::uint32_t acTable = dcTable + 1;

    const Magnitude dc = magnitudeOf(coefficients[0] - lastDc);
    lastDc = coefficients[0];
    add(dcTable, dc.size, dc.bits);

    int last = 0;
    for (std::uint64_t places = jpgZigzagBits(nonzero & ~std::uint64_t{1}); places != 0; places &= places - 1) {
        const int place = std::countr_zero(places);
        auto zeros = static_cast<std::uint32_t>(place - last - 1);
        for (; zeros > 15; zeros -= 16)
            add(acTable, sixteenZeros, 0);
        const Magnitude ac = magnitudeOf(coefficients[jpgZigzag[static_cast<std::size_t>(place)]]);
        add(acTable, zeros << 4 | ac.size, ac.bits);
        last = place;
    }
    if (last < 63) add(acTable, endOfBlock, 0);
    m_room -= static_cast<std::size_t>(next - m_next);
    m_next = next;
}

JpgHuffmanTable JpgScan::table(std::size_t kind, bool isAc) const {
    return JpgHuffmanTable::make(m_frequencies[2 * kind + (isAc ? 1 : 0)]);
}

void JpgScan::write(std::vector<std::uint8_t>& out) const {
    struct Entry {
        std::uint32_t code;  // already shifted to make room for the additional bits
        std::uint32_t total; // bits, with those
    };
    std::vector<Entry> entries(m_frequencies.size() * 256);
    std::uint64_t totalBits = 0;
    for (std::size_t table = 0; table < m_frequencies.size(); ++table) {
        const JpgHuffmanTable codes = JpgHuffmanTable::make(m_frequencies[table]);
        for (std::size_t symbol = 0; symbol < 256; ++symbol) {
            const auto additional = static_cast<std::uint32_t>(symbol & 15);
            const JpgHuffmanTable::Code code = codes.codes[symbol];
            entries[table * 256 + symbol] = {std::uint32_t{code.bits} << additional, code.length + additional};
            totalBits += std::uint64_t{m_frequencies[table][symbol]} * (code.length + additional);
        }
    }

    constexpr std::size_t mostBytesOfChunk = chunkTokens * 27 / 8 * 2 + 16; // all of them 255
    std::size_t used = out.size();
    out.reserve(used + static_cast<std::size_t>(totalBits / 8 + totalBits / 512) + mostBytesOfChunk);
    BitWriter writer(nullptr);
    for (const Chunk& chunk : m_chunks) {
        out.resize(used + mostBytesOfChunk);
        writer.position(out.data() + used);
        const std::size_t count = &chunk == &m_chunks.back() ? chunkTokens - m_room : chunk.count;
        for (const Token token : std::span(chunk.tokens.get(), count)) {
            const Entry& entry = entries[token >> 16];
            writer.put(entry.code | (token & 0xFFFF), entry.total);
        }
        used = static_cast<std::size_t>(writer.position() - out.data());
    }
    out.resize(used + 16);
    writer.position(out.data() + used);
    writer.finish();
    out.resize(static_cast<std::size_t>(writer.position() - out.data()));
}

} // namespace pixkit
