// Joins entries of tables of Huffman codes, for sets that gather lanes.
#pragma once
#include "kernels/kernels.h"

namespace pixkit::kernels {
namespace {

void joinGatheredCodes(CodeEntry* joined, unsigned joinedBits, const CodeEntry* entries, unsigned indexBits) {
    constexpr std::size_t vecEntries = vecBytes / sizeof(CodeEntry);
    const std::size_t mask = (std::size_t{1} << indexBits) - 1;
    const Vec wholeIndex = all32(joinedBits << 8 | 0xFF);
    Vec indexes = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    for (std::size_t index = 0; index < std::size_t{1} << joinedBits; index += vecEntries) {
        const Vec first = load(reinterpret_cast<const std::uint8_t*>(entries + (index & mask)));
        const Vec bits = bitAnd(shiftRight32<8>(first), all32(15)), bitsInPlace = shiftLeft32<8>(bits);
        const Vec second =
            _mm256_i32gather_epi32(reinterpret_cast<const int*>(entries), _mm256_srlv_epi32(indexes, bits), 4);
        const Vec meanings = add32(bitAnd(second, all32(0xFF00FFFF)), bitAnd(first, all32(0x00FF0000)));
        const Vec both = add32(meanings, add32(all32(oneLiteral), bitOr(bits, bitsInPlace)));
        const Vec areLiterals = greaterSigned32(bitAnd(first, all32(literalFlag)), zeros());
        const Vec longest = bitAnd(subtract32(wholeIndex, bitsInPlace), areLiterals);
        const Vec stayAlone = greaterSigned32(bitAnd(second, all32(specialFlag | 0xFFF)), longest);
        store(reinterpret_cast<std::uint8_t*>(joined + index), select(stayAlone, first, both));
        indexes = add32(indexes, all32(vecEntries));
    }
}

inline void useJoinCodes(Table& table) {
    table.joinCodes = joinGatheredCodes;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
