#include "coding/deflate/HuffmanTable.h"
#include "coding/deflate/Symbols.h"
#include "kernels/kernels.h"
#include <array>
#include <cstring>

namespace pixkit::deflate {
namespace {

// What an entry says about its symbol before the code's length is known.
constexpr Entry meaning(unsigned base, unsigned extraBits) {
    return base << 16 | extraBits;
}

constexpr auto literalMeanings = []() {
    std::array<Entry, literalCodes> meanings{};
    meanings.fill(invalidEntry);
    for (unsigned symbol = 0; symbol < endOfBlock; ++symbol)
        meanings[symbol] = meaning(symbol * 0x101, 0) | literalFlag | oneLiteral;
    meanings[endOfBlock] = endOfBlockEntry;
    for (std::size_t i = 0; i < lengthExtra.size(); ++i)
        meanings[endOfBlock + 1 + i] =
            meaning((lengthExtra[i].base - unsigned{shortestMatch}) << 8, lengthExtra[i].bits);
    return meanings;
}();

constexpr auto distanceMeanings = []() {
    std::array<Entry, distanceCodes> meanings{};
    meanings.fill(invalidEntry);
    for (std::size_t i = 0; i < distanceExtra.size(); ++i)
        meanings[i] = meaning(distanceExtra[i].base, distanceExtra[i].bits);
    return meanings;
}();

constexpr auto codeLengthMeanings = []() {
    std::array<Entry, codeLengthSymbols> meanings{};
    for (unsigned symbol = 0; symbol < codeLengthSymbols; ++symbol)
        meanings[symbol] = meaning(symbol, repeatExtraBits(symbol));
    return meanings;
}();

constexpr Entry withCodeBits(Entry symbolMeaning, unsigned bits) {
    return symbolMeaning + bits * 0x101;
}

// The symbols of a code by length and, within a length, by number: the order of the codes themselves.
struct SortedCode {
    unsigned perLength[longestCode + 1] = {};
    std::uint16_t symbols[literalCodes];
    unsigned used = 0, longest = 0;
    long unassigned = 1; // share of the code space without a code, in units of 2^-15; below zero: over-subscribed

    SortedCode(const std::uint8_t* lengths, unsigned count) noexcept {
        for (unsigned symbol = 0; symbol < count; ++symbol)
            ++perLength[lengths[symbol]];
        used = count - perLength[0];
        perLength[0] = 0;
        unsigned first[longestCode + 1];
        first[0] = used; // symbols without a code stand behind the others: no branch tells them apart
        for (unsigned bits = 1, sum = 0; bits <= longestCode; ++bits) {
            first[bits] = sum;
            sum += perLength[bits];
            // Once negative it stays so: there are at most 288 symbols in all.
            unassigned = unassigned * 2 - static_cast<long>(perLength[bits]);
            if (perLength[bits] != 0) longest = bits;
        }
        for (unsigned symbol = 0; symbol < count; ++symbol)
            symbols[first[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
    }
};

// The codes in their order, each with its first bit lowest as it comes in the stream.
class ReversedCodes {
  public:
    unsigned next(unsigned bits) noexcept {
        const unsigned code = m_code;
        m_code += 1u << (16 - bits);
        return unsigned{reversedBytes[code & 0xff]} << 8 | reversedBytes[code >> 8];
    }

  private:
    static constexpr auto reversedBytes = []() {
        std::array<std::uint8_t, 256> reversed{};
        for (unsigned byte = 0; byte < 256; ++byte)
            for (unsigned bit = 0; bit < 8; ++bit)
                reversed[byte] |= static_cast<std::uint8_t>((byte >> bit & 1) << (7 - bit));
        return reversed;
    }();

    unsigned m_code = 0; // its first bit is the highest of 16, behind it there are zeros
};

// Makes a table of 2^from entries one of 2^to, which finds the same.
void widen(Entry* table, unsigned from, unsigned to) noexcept {
    for (; from < to; ++from)
        std::memcpy(table + (std::size_t{1} << from), table, sizeof(Entry) << from);
}

// Fills a table whose index has `tableBits` bits from a complete code of more than one symbol.
void fill(Entry* table, unsigned tableBits, SortedCode& code, const Entry* meanings) noexcept {
    const std::uint16_t* symbol = code.symbols;
    ReversedCodes codes;

    // Short codes: while codes are `bits` long only 2^bits entries differ, so the table grows by doubling.
    const unsigned shortBits = code.longest < tableBits ? code.longest : tableBits;
    for (unsigned bits = 1; bits <= shortBits; ++bits) {
        for (unsigned n = code.perLength[bits]; n != 0; --n, ++symbol)
            table[codes.next(bits)] = withCodeBits(meanings[*symbol], bits);
        if (bits < tableBits) widen(table, bits, bits + 1);
    }
    widen(table, shortBits + 1, tableBits);
    if (code.longest <= tableBits) return;

    // Long codes: those that begin with the same `tableBits` bits share a subtable, wide enough for the longest of
    // them.
    const unsigned indexMask = (1u << tableBits) - 1;
    unsigned begin = 0, end = indexMask + 1, rest = 0;
    bool open = false;
    for (unsigned bits = tableBits + 1, prefix = 0; bits <= code.longest; ++bits) {
        for (; code.perLength[bits] != 0; --code.perLength[bits], ++symbol) {
            const unsigned reversed = codes.next(bits);
            if (!open || (reversed & indexMask) != prefix) {
                open = true;
                prefix = reversed & indexMask;
                rest = bits - tableBits;
                for (unsigned room = code.perLength[bits]; room < 1u << rest;) {
                    ++rest;
                    room = room * 2 + code.perLength[tableBits + rest];
                }
                begin = end;
                end += 1u << rest;
                table[prefix] = linkEntry | begin << 16 | rest << 8 | tableBits;
            }
            const Entry entry = withCodeBits(meanings[*symbol], bits - tableBits);
            for (unsigned i = reversed >> tableBits; i < 1u << rest; i += 1u << (bits - tableBits))
                table[begin + i] = entry;
        }
    }
}

// A table for codes of one bit: 0 finds `zero`, 1 finds `one`.
void fillTwo(Entry* table, unsigned tableBits, Entry zero, Entry one) noexcept {
    table[0] = withCodeBits(zero, 1);
    table[1] = withCodeBits(one, 1);
    widen(table, 1, tableBits);
}

// The wider index pays where of all pairs of a literal and what follows one in sixteen fits into it and into no shorter
// one (measured on pictures). Codes of n bits are taken to come once in 2^n.
unsigned widthForJoining(const SortedCode& code, const std::uint8_t* lengths, unsigned symbols) noexcept {
    unsigned literals[longestCode + 1];
    std::memcpy(literals, code.perLength, sizeof literals);
    for (unsigned symbol = endOfBlock; symbol < symbols; ++symbol)
        --literals[lengths[symbol]];
    unsigned gained = 0;
    for (unsigned bits = 1; bits < widestJoinedBits; ++bits)
        gained += literals[bits] * code.perLength[widestJoinedBits - bits];
    return gained >= 1u << (widestJoinedBits - 4) ? widestJoinedBits : literalTableBits;
}

} // namespace

bool build(LiteralTable& table, const std::uint8_t* lengths, unsigned symbols) noexcept {
    SortedCode code(lengths, symbols);
    table.joinedBits = widthForJoining(code, lengths, symbols);
    if (code.unassigned == 0) {
        fill(table.entries, literalTableBits, code, literalMeanings.data());
        return true;
    }
    if (code.used != 1 || code.longest != 1) return false;
    fillTwo(table.entries, literalTableBits, literalMeanings[code.symbols[0]], invalidEntry);
    return true;
}

bool build(DistanceTable& table, const std::uint8_t* lengths, unsigned symbols) noexcept {
    SortedCode code(lengths, symbols);
    if (code.unassigned == 0) {
        fill(table.entries, distanceTableBits, code, distanceMeanings.data());
        return true;
    }
    if (code.used != 0 && (code.used != 1 || code.longest != 1)) return false;
    fillTwo(table.entries, distanceTableBits, code.used == 1 ? distanceMeanings[code.symbols[0]] : invalidEntry,
            invalidEntry);
    return true;
}

bool build(CodeLengthTable& table, const std::uint8_t* lengths) noexcept {
    SortedCode code(lengths, codeLengthSymbols);
    if (code.unassigned == 0) {
        fill(table.entries, codeLengthTableBits, code, codeLengthMeanings.data());
        return true;
    }
    if (code.used != 0) return false;
    fillTwo(table.entries, codeLengthTableBits, codeLengthMeanings[0], codeLengthMeanings[0]);
    return true;
}

void joinEntries(Entry* joined, const LiteralTable& table) noexcept {
    kernels::table().joinCodes(joined, table.joinedBits, table.entries, literalTableBits);
}

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
