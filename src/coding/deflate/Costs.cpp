#include "coding/deflate/Costs.h"
#include <algorithm>
#include <bit>
#include <numeric>

namespace pixkit::deflate {

namespace {

constexpr std::size_t logSteps = 256;

// log2(1 + i / 256), by squaring once for each bit of the result.
constexpr std::array<std::uint8_t, logSteps> fractionOfLog = [] {
    std::array<std::uint8_t, logSteps> table{};
    for (std::size_t i = 0; i < logSteps; ++i) {
        std::uint64_t x = (logSteps + i) << 22; // 1.0 is 2^30
        unsigned log = 0;
        for (unsigned bit = costUnit / 2; bit > 0; bit /= 2) {
            x = x * x >> 30;
            if (x >= std::uint64_t{2} << 30) {
                x >>= 1;
                log += bit;
            }
        }
        table[i] = static_cast<std::uint8_t>(log);
    }
    return table;
}();

// What never occurred may still come: it is taken for dear, but not so dear that it never would.
constexpr std::uint32_t dearestLiteral = 12 * costUnit, dearestLength = 11 * costUnit, dearestDistance = 8 * costUnit;

// Of `all` symbols, `count` are this one. No code is shorter than a bit.
std::uint32_t costOf(std::uint32_t all, std::uint32_t count, std::uint32_t dearest) noexcept {
    if (count == 0 || all < count) return dearest;
    return std::clamp(logarithm(all) - logarithm(count), costUnit, dearest);
}

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

} // namespace

unsigned logarithm(std::uint32_t value) noexcept {
    const auto exponent = static_cast<unsigned>(std::bit_width(value)) - 1;
    const std::uint32_t mantissa = exponent >= 8 ? value >> (exponent - 8) : value << (8 - exponent);
    return exponent * costUnit + fractionOfLog[mantissa & (logSteps - 1)];
}

void ByteCounts::add(std::span<const std::uint8_t> bytes) noexcept {
    for (; bytes.size() >= 8; bytes = bytes.subspan(8))
        addWord(bytes.data());
    for (const std::uint8_t byte : bytes)
        ++m_tables[0][byte];
}

void Histogram::add(const Histogram& other) noexcept {
    for (std::size_t i = 0; i < literal.size(); ++i)
        literal[i] += other.literal[i];
    for (std::size_t i = 0; i < distance.size(); ++i)
        distance[i] += other.distance[i];
}

std::uint64_t Histogram::blockCost() const noexcept {
    return entropy(literal) + entropy(distance) + headCost(literal) + headCost(distance) + std::uint64_t{80} * costUnit;
}

Costs::Costs(const Histogram& symbols) noexcept {
    const auto all = std::accumulate(symbols.literal.begin(), symbols.literal.end(), std::uint32_t{1});
    const auto copies = std::accumulate(symbols.distance.begin(), symbols.distance.end(), std::uint32_t{1});
    for (std::size_t i = 0; i < endOfBlock; ++i)
        literal[i] = costOf(all, symbols.literal[i], dearestLiteral);
    for (std::size_t i = shortestMatch; i < length.size(); ++i) {
        const std::size_t symbol = lengthSymbolOf[i];
        length[i] =
            costOf(all, symbols.literal[endOfBlock + 1 + symbol], dearestLength) + lengthExtra[symbol].bits * costUnit;
    }
    for (std::size_t i = 0; i < distanceSymbols; ++i)
        distance[i] = costOf(copies, symbols.distance[i], dearestDistance) + distanceExtra[i].bits * costUnit;
}

Costs::Costs(std::span<const std::uint8_t> data) noexcept {
    takeLiterals(data);
    for (std::size_t i = shortestMatch; i < length.size(); ++i)
        length[i] = (6U + lengthExtra[lengthSymbolOf[i]].bits) * costUnit;
    for (std::size_t i = 0; i < distanceSymbols; ++i)
        distance[i] = (4U + distanceExtra[i].bits) * costUnit;
}

Costs Costs::fixedCodes() noexcept {
    Costs costs{std::span<const std::uint8_t>()};
    for (std::size_t i = 0; i < endOfBlock; ++i)
        costs.literal[i] = fixedLiteralLengths[i] * costUnit;
    for (std::size_t i = shortestMatch; i < costs.length.size(); ++i) {
        const std::size_t symbol = lengthSymbolOf[i];
        costs.length[i] =
            (unsigned{fixedLiteralLengths[endOfBlock + 1 + symbol]} + lengthExtra[symbol].bits) * costUnit;
    }
    for (std::size_t i = 0; i < distanceSymbols; ++i)
        costs.distance[i] = (unsigned{fixedDistanceLengths[i]} + distanceExtra[i].bits) * costUnit;
    return costs;
}

void Costs::takeLiterals(std::span<const std::uint8_t> data) noexcept {
    const ByteCounts counts(data);
    for (std::size_t i = 0; i < endOfBlock; ++i)
        literal[i] = costOf(static_cast<std::uint32_t>(data.size()), counts[i], dearestLiteral);
}

} // namespace pixkit::deflate
// SPDX-License-Identifier: MIT
