#include "coding/deflate/BlockCoder.h"
#include "coding/deflate/HuffmanCode.h"
#include <algorithm>
#include <utility>

namespace pixkit::deflate {

namespace {

using LiteralLengths = std::array<std::uint8_t, literalCodes>;
using DistanceLengths = std::array<std::uint8_t, distanceCodes>;

// With codes of 14 bits four literals, or a whole copy, fit between two flushes.
constexpr unsigned longestLiteralCode = 14;
constexpr unsigned longestCodeLengthCode = 7;

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

void BlockCoder::store(std::span<const std::uint8_t> input, bool isLast) {
    constexpr std::size_t largest = 65535;
    m_bits.reserve(input.size() + (input.size() / largest + 2) * 6);
    do {
        const auto part = input.first(std::min(input.size(), largest));
        input = input.subspan(part.size());
        m_bits.put(isLast && input.empty() ? 1 : 0, 3);
        m_bits.alignToByte();
        m_bits.put(part.size() | (~part.size() & 0xFFFFU) << 16, 32);
        m_bits.flush();
        m_bits.putBytes(part.data(), part.size());
    } while (!input.empty());
}

void BlockCoder::write(std::span<const std::uint8_t> input, Histogram& symbols, std::span<const Sequence> sequences,
                       bool isLast) {
    LiteralLengths literals{};
    DistanceLengths distances{};
    symbols.literal[endOfBlock] = 1;
    makeCodeLengths(symbols.literal, longestLiteralCode, std::span(literals).first(literalSymbols));
    makeCodeLengths(symbols.distance, longestCode, std::span(distances).first(distanceSymbols));
    symbols.literal[endOfBlock] = 0;
    const DynamicHead head(literals, distances);
    const std::uint64_t dynamicBits = head.bits() + sizeOf(symbols, literals, distances);
    const std::uint64_t fixedBits = sizeOf(symbols, fixedLiteralLengths, fixedDistanceLengths);
    const std::uint64_t storedBits = input.size() * std::uint64_t{8} + (input.size() / 65535 + 1) * 40;
    const std::uint64_t codedBits = std::min(dynamicBits, fixedBits);
    if (storedBits < codedBits) return store(input, isLast);

    m_bits.reserve(static_cast<std::size_t>(codedBits + 3) / 8);
    const bool isFixed = fixedBits <= dynamicBits;
    m_bits.put((isLast ? 1U : 0U) | (isFixed ? 2U : 4U), 3);
    if (isFixed) {
        putSequences(input.data(), sequences, fixedLiteralLengths, fixedDistanceLengths);
    } else {
        head.write(m_bits);
        putSequences(input.data(), sequences, literals, distances);
    }
}

void BlockCoder::finish() {
    m_bits.alignToByte();
    m_bits.finish();
}

void BlockCoder::putSequences(const std::uint8_t* in, std::span<const Sequence> sequences,
                              const LiteralLengths& literalLengths, const DistanceLengths& distanceLengths) {
    std::array<std::uint16_t, literalCodes> codeOfLiteral;
    std::array<std::uint16_t, distanceCodes> codeOfDistance;
    makeCodes(literalLengths, codeOfLiteral);
    makeCodes(distanceLengths, codeOfDistance);
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
    const auto codeAt = [&](const std::uint8_t* byte) {
        return std::pair<std::uint64_t, unsigned>(codeOfLiteral[*byte], literalLengths[*byte]);
    };
    const auto putLiteral = [&](std::uint8_t byte) { bits.put(codeOfLiteral[byte], literalLengths[byte]); };
    for (const Sequence sequence : sequences) {
        std::uint32_t literals = sequence.literals;
        for (; literals >= 4; literals -= 4, in += 4) {
            // Put together apart from what is there already, for which the next four then need not wait.
            const auto [code0, count0] = codeAt(in);
            const auto [code1, count1] = codeAt(in + 1);
            const auto [code2, count2] = codeAt(in + 2);
            const auto [code3, count3] = codeAt(in + 3);
            const unsigned firstTwo = count0 + count1;
            bits.put(code0 | code1 << count0 | (code2 | code3 << count2) << firstTwo, firstTwo + count2 + count3);
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
// SPDX-License-Identifier: MIT
