#include "codecs/jpg/JpgScan.h"
#include "codecs/jpg/JpgQuantisation.h"
#include <bit>
#include <cstdlib>
#include <cstring>
#include <span>

namespace pixkit {

namespace {

constexpr std::uint32_t endOfBlock = 0x00;
constexpr std::uint32_t sixteenZeros = 0xF0;

// T.81, F.1.2.1, of every difference and coefficient that there may be: the category, which says how many bits follow,
// from bit 16 on, below it these bits, those of negative numbers lowered by one.
class Magnitudes {
  public:
    static constexpr std::int32_t most = 2048; // what samples of 8 bits make stays below, either way

    Magnitudes() noexcept {
        for (std::int32_t value = -most; value < most; ++value) {
            const auto size = static_cast<unsigned>(std::bit_width(static_cast<unsigned>(std::abs(value))));
            const std::uint32_t bits = static_cast<std::uint32_t>(value < 0 ? value - 1 : value) & ((1U << size) - 1);
            m_tokens[static_cast<std::size_t>(value + most)] = size << 16 | bits;
        }
    }
    std::uint32_t operator[](std::int32_t value) const noexcept {
        return m_tokens[static_cast<std::size_t>(value + most)];
    }

  private:
    std::array<std::uint32_t, 2 * most> m_tokens;
};

const Magnitudes& magnitudes() noexcept {
    static const Magnitudes all;
    return all;
}

// Puts codes together to bytes, in which 255 does not stand for itself yet.
class BitPacker {
  public:
    // Where bytes are stored, eight at once.
    void position(std::uint8_t* out) noexcept { m_out = out; }
    std::uint8_t* position() const noexcept { return m_out; }

    // At most 27 bits; after two of them they are stored.
    void add(std::uint32_t bits, unsigned count) noexcept {
        m_bits = m_bits << count | bits;
        m_count += count;
    }
    void store() noexcept {
        const std::uint64_t word = m_bits << (64 - m_count);
        for (int i = 0; i < 8; ++i)
            m_out[i] = static_cast<std::uint8_t>(word >> (56 - 8 * i));
        m_out += m_count / 8;
        m_count %= 8;
    }
    // Fills the last byte with ones.
    void finish() noexcept {
        if (m_count == 0) return;
        const unsigned padding = 8 - m_count;
        add((1U << padding) - 1, padding);
        store();
    }

  private:
    std::uint8_t* m_out = nullptr;
    std::uint64_t m_bits = 0; // the low m_count of them are still to be stored
    unsigned m_count = 0;     // below 8 after a store
};

// Appends bytes, with a zero behind every 255.
void appendStuffed(std::vector<std::uint8_t>& out, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto* const marker = static_cast<const std::uint8_t*>(std::memchr(bytes.data(), 255, bytes.size()));
        const std::size_t count =
            marker == nullptr ? bytes.size() : static_cast<std::size_t>(marker - bytes.data()) + 1;
        out.insert(out.end(), bytes.data(), bytes.data() + count);
        if (marker != nullptr) out.push_back(0);
        bytes = bytes.subspan(count);
    }
}

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
    const Magnitudes& tokens = magnitudes();
    Token* next = m_next;
    std::size_t turn = 0;
    const auto add = [&](Token token) {
        ++m_frequencies[(token >> 16) + turn];
        turn ^= symbols;
        *next++ = token;
    };
    const auto dcTable = static_cast<Token>(2 * kind) << 24;
    const Token acTable = dcTable + (Token{1} << 24);

    add(dcTable + tokens[coefficients[0] - lastDc]);
    lastDc = coefficients[0];

    unsigned last = 0;
    for (std::uint64_t places = jpgZigzagBits(nonzero & ~std::uint64_t{1}); places != 0; places &= places - 1) {
        const auto place = static_cast<unsigned>(std::countr_zero(places));
        unsigned zeros = place - last - 1;
        for (; zeros > 15; zeros -= 16)
            add(acTable | sixteenZeros << 16);
        add(acTable + (zeros << 20) + tokens[coefficients[jpgZigzag[place]]]);
        last = place;
    }
    if (last < 63) add(acTable | endOfBlock << 16);
    m_room -= static_cast<std::size_t>(next - m_next);
    m_next = next;
}

JpgHuffmanTable JpgScan::tableOf(std::size_t table) const {
    std::array<std::uint32_t, 256> frequencies;
    for (std::size_t symbol = 0; symbol < 256; ++symbol)
        frequencies[symbol] = frequencyOf(table * 256 + symbol);
    return JpgHuffmanTable::make(frequencies);
}

JpgHuffmanTable JpgScan::table(std::size_t kind, bool isAc) const {
    return tableOf(2 * kind + (isAc ? 1 : 0));
}

void JpgScan::write(std::vector<std::uint8_t>& out) const {
    struct Entry {
        std::uint32_t code;  // already shifted to make room for the additional bits
        std::uint32_t total; // bits, with those
    };
    std::vector<Entry> entries(symbols);
    std::uint64_t totalBits = 0;
    for (std::size_t table = 0; table < 2 * kinds; ++table) {
        const JpgHuffmanTable codes = tableOf(table);
        for (std::size_t symbol = 0; symbol < 256; ++symbol) {
            const auto additional = static_cast<std::uint32_t>(symbol & 15);
            const JpgHuffmanTable::Code code = codes.codes[symbol];
            entries[table * 256 + symbol] = {std::uint32_t{code.bits} << additional, code.length + additional};
            totalBits += std::uint64_t{frequencyOf(table * 256 + symbol)} * (code.length + additional);
        }
    }

    out.reserve(out.size() + static_cast<std::size_t>(totalBits / 8 + totalBits / 512));
    std::vector<std::uint8_t> packed(chunkTokens * 27 / 8 + 16);
    BitPacker packer;
    for (const Chunk& chunk : m_chunks) {
        packer.position(packed.data());
        const std::size_t count = &chunk == &m_chunks.back() ? chunkTokens - m_room : chunk.count;
        const Token* const tokens = chunk.tokens.get();
        const auto add = [&](Token token) {
            const Entry& entry = entries[token >> 16];
            packer.add(entry.code | (token & 0xFFFF), entry.total);
        };
        std::size_t i = 0;
        for (; i + 1 < count; i += 2) {
            add(tokens[i]);
            add(tokens[i + 1]);
            packer.store();
        }
        if (i < count) {
            add(tokens[i]);
            packer.store();
        }
        if (&chunk == &m_chunks.back()) packer.finish();
        appendStuffed(out, {packed.data(), packer.position()});
    }
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
