// Decoding tables for the Huffman codes of a DEFLATE block (RFC 1951, 3.2.2).
//
// A table is indexed with the next bits of the stream. Codes up to the table's width are found at once; a longer code
// finds a link to a subtable, which its further bits index. An entry is one packed word that says everything about its
// symbol:
//
//     bits 0..7    bits to drop: the code and the extra bits behind it
//     bits 8..11   bits of the code alone (of its rest, in a subtable); in a link, the width of the subtable
//     bits 12..15  flags, below
//     bits 16..31  length or distance without its extra bits; one or two literals, the first one lower;
//                  a code length symbol; in a link, where the subtable begins
#pragma once
#include <cstddef>
#include <cstdint>

namespace pixkit::deflate {

using Entry = std::uint32_t;

// Set where two literals share an entry because both codes fit into the index.
inline constexpr Entry pairFlag = 1u << 12;
inline constexpr Entry endOfBlockFlag = 1u << 13; // always with specialFlag
inline constexpr Entry literalFlag = 1u << 14;
// Neither literal nor length nor distance: the end of the block, a code that stands for nothing (invalidFlag), or,
// with no other flag, a link to a subtable.
inline constexpr Entry specialFlag = 1u << 15;
inline constexpr Entry invalidFlag = 1u << 12; // always with specialFlag

constexpr unsigned dropBits(Entry entry) noexcept {
    return entry & 0xff;
}
constexpr unsigned codeBits(Entry entry) noexcept {
    return (entry >> 8) & 15;
}
constexpr unsigned baseOf(Entry entry) noexcept {
    return entry >> 16;
}
constexpr bool isLiteral(Entry entry) noexcept {
    return (entry & literalFlag) != 0;
}
constexpr bool isSpecial(Entry entry) noexcept {
    return (entry & specialFlag) != 0;
}
constexpr bool isLink(Entry entry) noexcept {
    return (entry & (specialFlag | endOfBlockFlag | invalidFlag)) == specialFlag;
}

// The widest index of each table, and the entries that the worst set of codes then needs, subtables included.
inline constexpr unsigned literalTableBits = 11, distanceTableBits = 8, codeLengthTableBits = 7;
inline constexpr std::size_t literalTableEntries = 2342, distanceTableEntries = 402;

template <std::size_t Entries>
struct HuffmanTable {
    unsigned bits = 0; // width of the index
    Entry entries[Entries];
};
using LiteralTable = HuffmanTable<literalTableEntries>;
using DistanceTable = HuffmanTable<distanceTableEntries>;
using CodeLengthTable = HuffmanTable<std::size_t{1} << codeLengthTableBits>;

// Each fills its table from the code length of every symbol (0: the symbol is not used) and is false for a set of
// lengths that is no usable code. Usable are, as everywhere: complete codes; a literal/length or distance code with
// one symbol of one bit, whose other bit is invalid; a distance code without symbols, invalid as soon as it is used.
// A code length code without symbols reads each bit as symbol 0.
bool build(LiteralTable& table, const std::uint8_t* lengths, unsigned symbols) noexcept;
bool build(DistanceTable& table, const std::uint8_t* lengths, unsigned symbols) noexcept;
bool build(CodeLengthTable& table, const std::uint8_t* lengths) noexcept;

// Lets entries of literals with short codes carry the next literal too, if the code is one where that happens often.
// It is worth its time only before long blocks.
void pairLiterals(LiteralTable& table) noexcept;

} // namespace pixkit::deflate
