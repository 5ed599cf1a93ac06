// Reference kernel for tables of Huffman codes.
#pragma once
#include "kernels/reference.h"

namespace pixkit::kernels {
namespace {

constexpr CodeEntry allOnesIf(bool condition) {
    return CodeEntry{0} - static_cast<CodeEntry>(condition);
}

void joinCodes(CodeEntry* joined, unsigned joinedBits, const CodeEntry* entries, unsigned indexBits) {
    const std::size_t mask = (std::size_t{1} << indexBits) - 1;
    for (std::size_t index = 0; index < std::size_t{1} << joinedBits; ++index) {
        const CodeEntry first = entries[index & mask];
        const unsigned bits = codeBits(first);
        const CodeEntry second = entries[index >> bits];
        const CodeEntry both = (second & 0xFF00FFFF) + (first & 0x00FF0000) + oneLiteral + bits * 0x101;
        // Special entries seem longer than any, and behind what is no literal there is no room. No processor would
        // foresee a branch.
        const CodeEntry longest = ((joinedBits - bits) << 8 | 0xFF) & allOnesIf(isLiteral(first));
        const CodeEntry areJoined = allOnesIf((second & (specialFlag | 0xFFF)) <= longest);
        joined[index] = first ^ ((first ^ both) & areJoined);
    }
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
