#include "coding/deflate/BlockWriter.h"
#include "coding/deflate/HuffmanCode.h"
#include <algorithm>
#include <bit>
#include <span>

namespace pixkit::deflate {

namespace {

using LiteralLengths = std::array<std::uint8_t, literalCodes>;
using DistanceLengths = std::array<std::uint8_t, distanceCodes>;

// With codes of 14 bits four literals, or a whole copy, fit between two flushes.
constexpr unsigned longestLiteralCode = 14;
constexpr unsigned longestCodeLengthCode = 7;

// --- estimates, in units of costUnit: of thousands of symbols the errors add up

template <std::size_t size>
std::uint64_t entropy(const std::array<std::uint32_t, size>& frequencies) noexcept {
    std::uint32_t total = 0;
    for (const std::uint32_t count : frequencies)
        total += count;
    if (total == 0) return 0;
    const std::uint64_t all = logarithm(total);
    std::uint64_t cost = 0;
    for (const std::uint32_t count : frequencies)
        if (count != 0) cost += count * (all - logarithm(count));
    return cost;
}

// What describing a code for these symbols takes: a few bits for each that occurs.
template <std::size_t size>
std::uint64_t headCost(const std::array<std::uint32_t, size>& frequencies) noexcept {
    std::uint64_t used = 0;
    for (const std::uint32_t count : frequencies)
        used += count != 0 ? 1 : 0;
    return used * 3 * costUnit;
}

// Without the extra bits, which are the same however the symbols are put into blocks.
std::uint64_t estimate(const Histogram& symbols) noexcept {
    return entropy(symbols.literal) + entropy(symbols.distance) + headCost(symbols.literal) +
           headCost(symbols.distance) + std::uint64_t{80} * costUnit;
}

// --- exact sizes, in bits

std::uint64_t sizeOf(const Histogram& symbols, const LiteralLengths& literals, const DistanceLengths& distances) {
    std::uint64_t bits = literals[endOfBlock];
    for (std::size_t i = 0; i < literalSymbols; ++i) {
        const unsigned extra = i > endOfBlock ? lengthExtra[i - endOfBlock - 1].bits : 0;
        bits += std::uint64_t{symbols.literal[i]} * (literals[i] + extra);
    }
    for (std::size_t i = 0; i < distanceSymbols; ++i)
        bits += std::uint64_t{symbols.distance[i]} * (distances[i] + unsigned{distanceExtra[i].bits});
    return bits;
}

// --- the head of a dynamic block (RFC 1951, 3.2.7)

class DynamicHead {
  public:
    DynamicHead(const LiteralLengths& literals, const DistanceLengths& distances) {
        m_literals = literalSymbols;
        while (m_literals > 257 && literals[m_literals - 1] == 0)
            --m_literals;
        m_distances = distanceSymbols;
        while (m_distances > 1 && distances[m_distances - 1] == 0)
            --m_distances;
        std::array<std::uint8_t, literalSymbols + distanceSymbols> lengths;
        std::copy_n(literals.begin(), m_literals, lengths.begin());
        std::copy_n(distances.begin(), m_distances, lengths.begin() + m_literals);
        code(std::span(lengths).first(m_literals + m_distances));
        makeCodeLengths(m_frequencies, longestCodeLengthCode, m_lengths);
        while (m_orders > 4 && m_lengths[codeLengthOrder[m_orders - 1]] == 0)
            --m_orders;
    }

    std::uint64_t bits() const noexcept {
        std::uint64_t sum = 5 + 5 + 4 + 3 * m_orders;
        for (std::size_t i = 0; i < codeLengthSymbols; ++i)
            sum += std::uint64_t{m_frequencies[i]} * (m_lengths[i] + repeatExtraBits(i));
        return sum;
    }

    void write(BitWriter& out) const noexcept {
        out.put(m_literals - 257, 5);
        out.put(m_distances - 1, 5);
        out.put(m_orders - 4, 4);
        out.flush();
        for (std::size_t i = 0; i < m_orders; ++i) {
            out.put(m_lengths[codeLengthOrder[i]], 3);
            out.flush();
        }
        std::array<std::uint16_t, codeLengthSymbols> codes;
        makeCodes(m_lengths, codes);
        for (std::size_t i = 0; i < m_count; ++i) {
            const Item item = m_items[i];
            out.put(codes[item.symbol], m_lengths[item.symbol]);
            out.put(item.extra, repeatExtraBits(item.symbol));
            out.flush();
        }
    }

  private:
    struct Item {
        std::uint8_t symbol, extra;
    };
    void add(std::size_t symbol, std::size_t extra) noexcept {
        m_items[m_count++] = {static_cast<std::uint8_t>(symbol), static_cast<std::uint8_t>(extra)};
        ++m_frequencies[symbol];
    }

    // Runs of zeros are fewZeros and manyZeros, runs of another length that length and then repeatLast.
    void code(std::span<const std::uint8_t> lengths) noexcept {
        for (std::size_t i = 0; i < lengths.size();) {
            const std::uint8_t length = lengths[i];
            std::size_t run = 1;
            while (i + run < lengths.size() && lengths[i + run] == length)
                ++run;
            i += run;
            if (length != 0) {
                add(length, 0);
                --run;
            }
            while (run >= 3) {
                const std::size_t taken = std::min<std::size_t>(run, length != 0 ? 6 : 138);
                const std::size_t symbol = length != 0 ? repeatLast : taken < 11 ? fewZeros : manyZeros;
                add(symbol, taken - fewestRepeats(symbol));
                run -= taken;
            }
            for (; run > 0; --run)
                add(length, 0);
        }
    }

    std::size_t m_literals, m_distances, m_orders = codeLengthSymbols;
    std::array<Item, literalSymbols + distanceSymbols> m_items;
    std::size_t m_count = 0;
    std::array<std::uint32_t, codeLengthSymbols> m_frequencies{};
    std::array<std::uint8_t, codeLengthSymbols> m_lengths{};
};

} // namespace

BlockWriter::BlockWriter(std::span<const std::uint8_t> input, std::vector<std::uint8_t>& out)
    : m_input(input.data()), m_bits(out), m_costs(input.first(std::min<std::size_t>(input.size(), 16384))) {}

void BlockWriter::endSegment() {
    if (m_literals > 0) {
        m_sequences.push_back({m_literals, 0, 0});
        m_segmentBytes += m_literals;
        m_literals = 0;
    }
    if (m_segmentSymbols == 0) return;
    m_costs = Costs(m_segment);
    m_costs.takeLiterals({m_input + m_blockBytes, m_segmentBytes});

    const std::uint64_t segmentCost = estimate(m_segment);
    if (m_blockBytes > 0) {
        Histogram together = m_block;
        together.add(m_segment);
        const std::uint64_t cost = estimate(together);
        if (cost <= m_blockCost + segmentCost && m_sequences.size() < mostSequences && m_blockBytes < mostBytes) {
            m_block = together;
            m_blockCost = cost;
        } else {
            writeBlock(m_blockSequences, false);
            m_blockBytes = 0;
        }
    }
    if (m_blockBytes == 0) {
        m_block = m_segment;
        m_blockCost = segmentCost;
    }
    m_blockBytes += m_segmentBytes;
    m_blockSequences = m_sequences.size();
    m_segment = {};
    m_segmentBytes = 0;
    m_segmentSymbols = 0;
}

void BlockWriter::finish() {
    endSegment();
    writeBlock(m_blockSequences, true);
    m_bits.alignToByte();
    m_bits.finish();
}

void BlockWriter::storeAll(std::size_t bytes) {
    store(bytes, true);
    m_bits.finish();
}

void BlockWriter::store(std::size_t bytes, bool isLast) {
    constexpr std::size_t largest = 65535;
    m_bits.reserve(bytes + (bytes / largest + 2) * 6);
    do {
        const std::size_t count = std::min(bytes, largest);
        bytes -= count;
        m_bits.put(isLast && bytes == 0 ? 1 : 0, 3);
        m_bits.alignToByte();
        m_bits.put(count | (~count & 0xFFFFU) << 16, 32);
        m_bits.flush();
        m_bits.putBytes(m_input, count);
        m_input += count;
    } while (bytes > 0);
}

void BlockWriter::writeBlock(std::size_t sequences, bool isLast) {
    LiteralLengths literals{};
    DistanceLengths distances{};
    m_block.literal[endOfBlock] = 1;
    makeCodeLengths(m_block.literal, longestLiteralCode, std::span(literals).first(literalSymbols));
    makeCodeLengths(m_block.distance, longestCode, std::span(distances).first(distanceSymbols));
    m_block.literal[endOfBlock] = 0;
    const DynamicHead head(literals, distances);
    const std::uint64_t dynamicBits = head.bits() + sizeOf(m_block, literals, distances);
    const std::uint64_t fixedBits = sizeOf(m_block, fixedLiteralLengths, fixedDistanceLengths);
    const std::uint64_t storedBits = m_blockBytes * 8 + (m_blockBytes / 65535 + 1) * 40;
    const std::uint64_t codedBits = std::min(dynamicBits, fixedBits);
    if (storedBits < codedBits) {
        store(m_blockBytes, isLast);
    } else {
        m_bits.reserve(static_cast<std::size_t>(codedBits + 3) / 8);
        const bool isFixed = fixedBits <= dynamicBits;
        m_bits.put((isLast ? 1U : 0U) | (isFixed ? 2U : 4U), 3);
        if (isFixed) {
            putSequences(sequences, fixedLiteralLengths, fixedDistanceLengths);
        } else {
            head.write(m_bits);
            putSequences(sequences, literals, distances);
        }
        m_input += m_blockBytes;
    }
    m_sequences.erase(m_sequences.begin(), m_sequences.begin() + static_cast<std::ptrdiff_t>(sequences));
}

void BlockWriter::putSequences(std::size_t count, const LiteralLengths& literalLengths,
                               const DistanceLengths& distanceLengths) {
    std::array<std::uint16_t, literalCodes> codeOfLiteral;
    std::array<std::uint16_t, distanceCodes> codeOfDistance;
    makeCodes(literalLengths, codeOfLiteral);
    makeCodes(distanceLengths, codeOfDistance);
    // Lengths with their extra bits.
    struct LengthCode {
        std::uint32_t bits;
        std::uint32_t count;
    };
    std::array<LengthCode, longestMatch + 1> lengthCodes;
    for (std::size_t length = shortestMatch; length <= longestMatch; ++length) {
        const std::size_t i = lengthSymbolOf[length];
        const std::size_t symbol = endOfBlock + 1 + i;
        const unsigned bits = literalLengths[symbol];
        lengthCodes[length] = {codeOfLiteral[symbol] | static_cast<std::uint32_t>(length - lengthExtra[i].base) << bits,
                               bits + lengthExtra[i].bits};
    }

    BitWriter bits = m_bits; // in registers
    const std::uint8_t* in = m_input;
    const auto putLiteral = [&](std::uint8_t byte) { bits.put(codeOfLiteral[byte], literalLengths[byte]); };
    for (std::size_t i = 0; i < count; ++i) {
        const Sequence sequence = m_sequences[i];
        std::uint32_t literals = sequence.literals;
        for (; literals >= 4; literals -= 4, in += 4) {
            putLiteral(in[0]);
            putLiteral(in[1]);
            putLiteral(in[2]);
            putLiteral(in[3]);
            bits.flush();
        }
        for (; literals > 0; --literals)
            putLiteral(*in++);
        bits.flush();
        if (sequence.length == 0) continue;
        const LengthCode length = lengthCodes[sequence.length];
        bits.put(length.bits, length.count);
        const std::size_t distance = sequence.distance + std::size_t{1};
        const std::size_t symbol = distanceSymbolOf(distance);
        const ExtraBits extra = distanceExtra[symbol];
        bits.put(codeOfDistance[symbol] | (distance - extra.base) << distanceLengths[symbol],
                 distanceLengths[symbol] + unsigned{extra.bits});
        bits.flush();
        in += sequence.length;
    }
    bits.put(codeOfLiteral[endOfBlock], literalLengths[endOfBlock]);
    bits.flush();
    m_bits.takePosition(bits);
}

} // namespace pixkit::deflate
