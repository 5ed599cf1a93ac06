#include "coding/deflate/HuffmanTable.h"
#include "coding/deflate/Symbols.h"
#include <array>
#include <bit>
#include <cstring>

namespace pixkit::deflate {
namespace {

// What an entry says about its symbol before the code's length is known.
constexpr Entry meaning(unsigned base, unsigned extraBits) {
    return base << 16 | extraBits;
}

constexpr auto literalMeanings = []() {
    std::array<Entry, literalCodes> meanings{};
    meanings.fill(specialFlag | invalidFlag);
    for (unsigned symbol = 0; symbol < endOfBlock; ++symbol)
        meanings[symbol] = meaning(symbol, 0) | literalFlag;
    meanings[endOfBlock] = specialFlag | endOfBlockFlag;
    for (std::size_t i = 0; i < lengthExtra.size(); ++i)
        meanings[endOfBlock + 1 + i] = meaning(lengthExtra[i].base, lengthExtra[i].bits);
    return meanings;
}();

constexpr auto distanceMeanings = []() {
    std::array<Entry, distanceCodes> meanings{};
    meanings.fill(specialFlag | invalidFlag);
    for (std::size_t i = 0; i < distanceExtra.size(); ++i)
        meanings[i] = meaning(distanceExtra[i].base, distanceExtra[i].bits);
    return meanings;
}();

constexpr auto codeLengthMeanings = []() {
    std::array<Entry, codeLengthSymbols> meanings{};
    for (unsigned symbol = 0; symbol < codeLengthSymbols; ++symbol)
        meanings[symbol] = meaning(symbol, 0);
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
        for (unsigned bits = 1, sum = 0; bits <= longestCode; ++bits) {
            first[bits] = sum;
            sum += perLength[bits];
            // Once negative it stays so: there are at most 288 symbols in all.
            unassigned = unassigned * 2 - static_cast<long>(perLength[bits]);
            if (perLength[bits] != 0) longest = bits;
        }
        for (unsigned symbol = 0; symbol < count; ++symbol)
            if (lengths[symbol] != 0) symbols[first[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
    }
};

// The code after `code`, both with their first bit lowest as they come in the stream. Not for the last code.
unsigned nextReversed(unsigned code, unsigned bits) noexcept {
    const unsigned highestZero = std::bit_floor(~code & ((1u << bits) - 1));
    return (code & (highestZero - 1)) | highestZero;
}

// Fills a table from a complete code of more than one symbol, its index at most `maxBits` wide. Returns its width.
unsigned fill(Entry* table, unsigned maxBits, SortedCode& code, const Entry* meanings) noexcept {
    const unsigned tableBits = code.longest < maxBits ? code.longest : maxBits;
    const std::uint16_t* symbol = code.symbols;
    const std::uint16_t* const lastSymbol = code.symbols + code.used - 1;
    unsigned reversed = 0;

    // Short codes: while codes are `bits` long only 2^bits entries differ, so the table grows by doubling.
    for (unsigned bits = 1; bits <= tableBits; ++bits) {
        for (unsigned n = code.perLength[bits]; n != 0; --n, ++symbol) {
            table[reversed] = withCodeBits(meanings[*symbol], bits);
            if (symbol != lastSymbol) reversed = nextReversed(reversed, bits);
        }
        if (bits < tableBits) std::memcpy(table + (1u << bits), table, sizeof(Entry) << bits);
    }
    if (code.longest == tableBits) return tableBits;

    // Long codes: those that begin with the same `tableBits` bits share a subtable, wide enough for the longest of
    // them.
    const unsigned indexMask = (1u << tableBits) - 1;
    unsigned begin = 0, end = indexMask + 1, rest = 0;
    bool open = false;
    for (unsigned bits = tableBits + 1, prefix = 0; bits <= code.longest; ++bits) {
        for (; code.perLength[bits] != 0; --code.perLength[bits], ++symbol) {
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
                table[prefix] = specialFlag | begin << 16 | rest << 8 | tableBits;
            }
            const Entry entry = withCodeBits(meanings[*symbol], bits - tableBits);
            for (unsigned i = reversed >> tableBits; i < 1u << rest; i += 1u << (bits - tableBits))
                table[begin + i] = entry;
            if (symbol != lastSymbol) reversed = nextReversed(reversed, bits);
        }
    }
    return tableBits;
}

// A one-bit table for codes that say nothing but themselves: 0 finds `zero`, 1 finds `one`.
unsigned fillTwo(Entry* table, Entry zero, Entry one) noexcept {
    table[0] = withCodeBits(zero, 1);
    table[1] = withCodeBits(one, 1);
    return 1;
}

} // namespace

bool build(LiteralTable& table, const std::uint8_t* lengths, unsigned symbols) noexcept {
    SortedCode code(lengths, symbols);
    if (code.unassigned == 0) {
        table.bits = fill(table.entries, literalTableBits, code, literalMeanings.data());
        return true;
    }
    if (code.used != 1 || code.longest != 1) return false;
    table.bits = fillTwo(table.entries, literalMeanings[code.symbols[0]], specialFlag | invalidFlag);
    return true;
}

bool build(DistanceTable& table, const std::uint8_t* lengths, unsigned symbols) noexcept {
    SortedCode code(lengths, symbols);
    if (code.unassigned == 0) {
        table.bits = fill(table.entries, distanceTableBits, code, distanceMeanings.data());
        return true;
    }
    constexpr Entry invalid = specialFlag | invalidFlag;
    if (code.used != 0 && (code.used != 1 || code.longest != 1)) return false;
    table.bits = fillTwo(table.entries, code.used == 1 ? distanceMeanings[code.symbols[0]] : invalid, invalid);
    return true;
}

bool build(CodeLengthTable& table, const std::uint8_t* lengths) noexcept {
    SortedCode code(lengths, codeLengthSymbols);
    if (code.unassigned == 0) {
        table.bits = fill(table.entries, codeLengthTableBits, code, codeLengthMeanings.data());
        return true;
    }
    if (code.used != 0) return false;
    table.bits = fillTwo(table.entries, codeLengthMeanings[0], codeLengthMeanings[0]);
    return true;
}

void pairLiterals(LiteralTable& table) noexcept {
    const unsigned size = 1u << table.bits;
    // The entry at `index`, with the literal behind its own where both codes fit into the index. Everything that a code
    // leaves of the index is the beginning of the next code.
    const auto paired = [&](unsigned index) {
        const Entry first = table.entries[index];
        if (!isLiteral(first)) return first;
        const Entry second = table.entries[index >> codeBits(first)];
        if (!isLiteral(second) || codeBits(first) + codeBits(second) > table.bits) return first;
        return first + codeBits(second) + (second & 0x00ff0000) * 0x100 + pairFlag;
    };
    // Each index is about as likely to come up as any other: a sample says how often pairs will. Under an eighth the
    // pairing costs more than it gains.
    unsigned pairs = 0;
    for (unsigned sample = 0; sample < 64; ++sample) {
        constexpr unsigned spread = 0x9e5; // odd, and without a pattern in the low bits, where codes begin
        if ((paired(sample * spread & (size - 1)) & (literalFlag | pairFlag)) == (literalFlag | pairFlag)) ++pairs;
    }
    if (pairs < 8) return;
    // What a pair needs of its second literal stays as it was when that becomes a pair itself: any order will do.
    for (unsigned index = 0; index < size; ++index)
        table.entries[index] = paired(index);
}

} // namespace pixkit::deflate
