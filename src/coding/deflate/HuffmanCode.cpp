#include "coding/deflate/HuffmanCode.h"
#include "coding/deflate/Symbols.h"
#include <algorithm>
#include <array>

namespace pixkit::deflate {

namespace {

constexpr unsigned symbolBits = 9;

// A. Moffat, J. Katajainen: In-Place Calculation of Minimum-Redundancy Codes (1995). Ascending frequencies become code
// lengths, longest first.
void minimumRedundancy(std::span<std::uint32_t> a) {
    const auto n = static_cast<int>(a.size());
    const auto at = [&](int i) -> std::uint32_t& { return a[static_cast<std::size_t>(i)]; };
    // Frequencies to the parents of the inner nodes.
    at(0) += at(1);
    int root = 0;
    int leaf = 2;
    for (int next = 1; next < n - 1; ++next) {
        const auto take = [&] {
            if (leaf >= n || (root < next && at(root) < at(leaf))) {
                const std::uint32_t weight = at(root);
                at(root++) = static_cast<std::uint32_t>(next);
                return weight;
            }
            return at(leaf++);
        };
        const std::uint32_t first = take();
        at(next) = first + take();
    }
    // Parents to depths of the inner nodes.
    at(n - 2) = 0;
    for (int next = n - 3; next >= 0; --next)
        at(next) = at(static_cast<int>(at(next))) + 1;
    // Depths of the inner nodes to depths of the leaves.
    int available = 1;
    std::uint32_t depth = 0;
    root = n - 2;
    int next = n - 1;
    while (available > 0) {
        int used = 0;
        for (; root >= 0 && at(root) == depth; --root)
            ++used;
        for (; available > used; --available)
            at(next--) = depth;
        available = 2 * used;
        ++depth;
    }
}

// Brings codes that are too long to `longest` bits, and pays for that by making others longer, one bit each.
void limitLengths(std::span<std::uint32_t> countOfLength, unsigned longest) {
    std::uint32_t sum = 0; // of Kraft's, in units of the longest code
    for (unsigned length = 1; length <= longest; ++length)
        sum += countOfLength[length] << (longest - length);
    for (; sum > 1U << longest; --sum) {
        --countOfLength[longest];
        unsigned length = longest - 1;
        while (countOfLength[length] == 0)
            --length;
        --countOfLength[length];
        countOfLength[length + 1] += 2;
    }
}

} // namespace

void makeCodeLengths(std::span<const std::uint32_t> frequencies, unsigned longest, std::span<std::uint8_t> lengths) {
    // Sorted by frequency, equal ones by symbol, so that every build orders them alike.
    std::array<std::uint32_t, literalCodes> sorted;
    std::size_t used = 0;
    for (std::size_t symbol = 0; symbol < frequencies.size(); ++symbol) {
        lengths[symbol] = 0;
        if (frequencies[symbol] != 0)
            sorted[used++] = frequencies[symbol] << symbolBits | static_cast<std::uint32_t>(symbol);
    }
    if (used < 2) {
        const std::size_t only = used == 0 ? 0 : sorted[0] & ((1U << symbolBits) - 1);
        lengths[only] = 1;
        lengths[only == 0 ? 1 : 0] = 1;
        return;
    }
    std::sort(sorted.begin(), sorted.begin() + static_cast<std::ptrdiff_t>(used));
    std::array<std::uint32_t, literalCodes> work;
    for (std::size_t i = 0; i < used; ++i)
        work[i] = sorted[i] >> symbolBits;
    minimumRedundancy(std::span(work).first(used));

    std::array<std::uint32_t, longestCode + 1> countOfLength{};
    for (std::size_t i = 0; i < used; ++i)
        ++countOfLength[std::min(work[i], longest)];
    limitLengths(countOfLength, longest);
    std::size_t i = 0;
    for (unsigned length = longest; length >= 1; --length)
        for (std::uint32_t count = countOfLength[length]; count > 0; --count)
            lengths[sorted[i++] & ((1U << symbolBits) - 1)] = static_cast<std::uint8_t>(length);
}

void makeCodes(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> codes) {
    std::array<unsigned, longestCode + 1> count{};
    for (const std::uint8_t length : lengths)
        ++count[length];
    count[0] = 0; // symbols without a code take no room
    std::array<unsigned, longestCode + 1> next{};
    for (std::size_t length = 1; length < next.size(); ++length)
        next[length] = (next[length - 1] + count[length - 1]) << 1;
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
        const unsigned length = lengths[symbol];
        unsigned code = length == 0 ? 0 : next[length]++;
        unsigned reversed = 0;
        for (unsigned bit = 0; bit < length; ++bit, code >>= 1)
            reversed = reversed << 1 | (code & 1);
        codes[symbol] = static_cast<std::uint16_t>(reversed);
    }
}

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
