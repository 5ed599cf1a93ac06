// Decoding tables for the Huffman codes of a DEFLATE block (RFC 1951, 3.2.2).
//
// A table is indexed with the next bits of the stream. Codes up to the table's width are found at once; a longer code
// finds a link to a subtable, which its further bits index. An entry is one packed word that says everything about its
// symbol:
//
//     bits 0..7    bits to drop: the code and the extra bits behind it
//     bits 8..11   bits of the code alone (of its rest, in a subtable); in a link, the width of the subtable
//     bits 12..13  how many literals it puts out; in a special entry, its kind
//     bit  14      literals are all it puts out
//     bit  15      it is special: neither literal nor copy nor distance
//     bits 16..23  a literal
//     bits 24..31  the last literal; or of a copy the length without its extra bits, less the shortest
//     bits 16..31  in tables of other codes: the distance without its extra bits, the code length symbol; in a link,
//                  where the subtable begins
//
// Before long blocks entries are joined where the codes of both fit into the index: two literals, or a literal and the
// copy behind it. That halves the look-ups, and what processors have to guess: whether a literal or a copy comes next.
// The index of joined entries has one bit more where enough of them are gained by it.
#pragma once
#include "coding/deflate/Symbols.h"
#include "kernels/code_entry.h"
#include <cstddef>
#include <cstdint>

namespace pixkit::deflate {

using Entry = kernels::CodeEntry;
using kernels::codeBits, kernels::isLiteral, kernels::literalFlag, kernels::oneLiteral, kernels::specialFlag;

// Kinds of special entries: a link to a subtable, the end of the block, a code that stands for nothing.
inline constexpr Entry specialKind = specialFlag | 3u << 12;
inline constexpr Entry linkEntry = specialFlag;
inline constexpr Entry endOfBlockEntry = specialFlag | 1u << 12;
inline constexpr Entry invalidEntry = specialFlag | 2u << 12;

constexpr unsigned dropBits(Entry entry) noexcept {
    return entry & 0xff;
}
constexpr unsigned baseOf(Entry entry) noexcept {
    return entry >> 16;
}
constexpr unsigned literalsIn(Entry entry) noexcept {
    return entry >> 12 & 3;
}
constexpr unsigned lengthOf(Entry entry) noexcept {
    return (entry >> 24) + shortestMatch;
}
constexpr bool isSpecial(Entry entry) noexcept {
    return (entry & specialFlag) != 0;
}
constexpr bool isLink(Entry entry) noexcept {
    return (entry & specialKind) == linkEntry;
}

// The width of each table's index, and the entries that the worst set of codes then needs, subtables included.
inline constexpr unsigned literalTableBits = 11, distanceTableBits = 8, codeLengthTableBits = 7;
inline constexpr unsigned widestJoinedBits = literalTableBits + 1;
inline constexpr std::size_t literalTableEntries = 2342, distanceTableEntries = 402;

template <unsigned Bits, std::size_t Entries>
struct HuffmanTable {
    static constexpr std::size_t mask = (std::size_t{1} << Bits) - 1; // of the index

    Entry entries[Entries];
};
struct LiteralTable : HuffmanTable<literalTableBits, literalTableEntries> {
    unsigned joinedBits; // the width that pays for joined entries: as wide as this table, or widestJoinedBits
};
using DistanceTable = HuffmanTable<distanceTableBits, distanceTableEntries>;
using CodeLengthTable = HuffmanTable<codeLengthTableBits, std::size_t{1} << codeLengthTableBits>;

// Each fills its table from the code length of every symbol (0: the symbol is not used) and is false for a set of
// lengths that is no usable code. Usable are, as everywhere: complete codes; a literal/length or distance code with
// one symbol of one bit, whose other bit is invalid; a distance code without symbols, invalid as soon as it is used.
// A code length code without symbols reads each bit as symbol 0.
bool build(LiteralTable& table, const std::uint8_t* lengths, unsigned symbols) noexcept;
bool build(DistanceTable& table, const std::uint8_t* lengths, unsigned symbols) noexcept;
bool build(CodeLengthTable& table, const std::uint8_t* lengths) noexcept;

// A table of 2^table.joinedBits entries, joined ones where there are such; subtables are left out.
void joinEntries(Entry* joined, const LiteralTable& table) noexcept;

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
