// Vector variants of the kernels that PNG data is made with: row filters, their sums, Adler-32.
#pragma once
#include "kernels/kernels.h"
#include "kernels/scalar.h"
#include "kernels/simd.h"

namespace pixkit::kernels {
namespace {

inline Vec subtract8(Vec a, Vec b) {
    return PIXKIT_SIMD(sub_epi8)(a, b);
}
inline Vec lesser8(Vec a, Vec b) {
    return PIXKIT_SIMD(min_epu8)(a, b);
}
inline Vec distance8(Vec a, Vec b) {
    return either(subtractHeld8(a, b), subtractHeld8(b, a));
}
// The sums of eight bytes each, in 64-bit lanes.
inline Vec sumsOf8(Vec a) {
    return PIXKIT_SIMD(sad_epu8)(a, zeros());
}
inline std::uint64_t laneSum64(Vec a) {
    std::uint64_t lanes[vecBytes / 8];
    std::memcpy(lanes, &a, sizeof lanes);
    std::uint64_t sum = 0;
    for (const std::uint64_t lane : lanes)
        sum += lane;
    return sum;
}

// The processor's average rounds up.
inline Vec average(Vec left, Vec above) {
    return subtract8(PIXKIT_SIMD(avg_epu8)(left, above), both(differing(left, above), all8(1)));
}

// With pa = |above - c| and pb = |left - c|, the third distance |left + above - 2c| is their sum where c lies on one
// side of both, else their difference. The sum may be held at 255, which pa and pb do not exceed.
inline Vec paeth(Vec left, Vec above, Vec c) {
    const Vec pa = distance8(above, c);
    const Vec pb = distance8(left, c);
    const Vec aboveIsLower = equal8(subtractHeld8(above, c), zeros());
    const Vec leftIsLower = equal8(subtractHeld8(left, c), zeros());
    const Vec pc = select(equal8(aboveIsLower, leftIsLower), addHeld8(pa, pb), distance8(pa, pb));
    const Vec least = lesser8(pa, lesser8(pb, pc));
    return select(equal8(pa, least), left, select(equal8(pb, least), above, c));
}

// Calls `body` with each whole vector behind the first pixel; returns where the rest begins.
template <class Body>
inline std::size_t eachVector(std::size_t bytes, std::size_t step, Body body) {
    std::size_t i = step < bytes ? step : bytes;
    for (; bytes - i >= vecBytes; i += vecBytes)
        body(i);
    return i;
}

void filterSub(std::uint8_t* dst, const std::uint8_t* row, std::size_t bytes, std::size_t step) {
    scalar::filterSubPart(dst, row, 0, step < bytes ? step : bytes, step);
    const std::size_t rest =
        eachVector(bytes, step, [&](std::size_t i) { store(dst + i, subtract8(load(row + i), load(row + i - step))); });
    scalar::filterSubPart(dst, row, rest, bytes, step);
}

void filterUp(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) {
    const std::size_t rest =
        eachVector(bytes, 0, [&](std::size_t i) { store(dst + i, subtract8(load(row + i), load(above + i))); });
    scalar::filterUp(dst + rest, row + rest, above + rest, bytes - rest);
}

void filterAvg(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
               std::size_t step) {
    scalar::filterAvgPart(dst, row, above, 0, step < bytes ? step : bytes, step);
    const std::size_t rest = eachVector(bytes, step, [&](std::size_t i) {
        store(dst + i, subtract8(load(row + i), average(load(row + i - step), load(above + i))));
    });
    scalar::filterAvgPart(dst, row, above, rest, bytes, step);
}

void filterPaeth(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                 std::size_t step) {
    scalar::filterPaethPart(dst, row, above, 0, step < bytes ? step : bytes, step);
    const std::size_t rest = eachVector(bytes, step, [&](std::size_t i) {
        const Vec predicted = paeth(load(row + i - step), load(above + i), load(above + i - step));
        store(dst + i, subtract8(load(row + i), predicted));
    });
    scalar::filterPaethPart(dst, row, above, rest, bytes, step);
}

void filterSums(std::uint64_t* sums, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                std::size_t step) {
    Vec totals[5] = {zeros(), zeros(), zeros(), zeros(), zeros()};
    const std::size_t rest = eachVector(bytes, step, [&](std::size_t i) {
        const Vec x = load(row + i);
        const Vec left = load(row + i - step);
        const Vec up = load(above + i);
        const auto add = [&](int type, Vec result) {
            totals[type] = PIXKIT_SIMD(add_epi64)(totals[type], sumsOf8(lesser8(result, subtract8(zeros(), result))));
        };
        add(0, x);
        add(1, subtract8(x, left));
        add(2, subtract8(x, up));
        add(3, subtract8(x, average(left, up)));
        add(4, subtract8(x, paeth(left, up, load(above + i - step))));
    });
    for (int type = 0; type < 5; ++type)
        sums[type] = laneSum64(totals[type]);
    scalar::filterSumsPart(sums, row, above, 0, step < bytes ? step : bytes, step);
    scalar::filterSumsPart(sums, row, above, rest, bytes, step);
}

// Of a vector's bytes, the first counts as often as there are bytes, the last once; words as lowWords and highWords
// give them.
inline Vec weights(bool high) {
    std::uint16_t words[vecBytes / 2];
    for (std::size_t i = 0; i < vecBytes / 2; ++i) {
        const std::size_t byte = i / 8 * 16 + (high ? 8 : 0) + i % 8;
        words[i] = static_cast<std::uint16_t>(vecBytes - byte);
    }
    Vec v;
    std::memcpy(&v, words, sizeof v);
    return v;
}

std::uint32_t adler32(std::uint32_t sum, const std::uint8_t* bytes, std::size_t count) {
    constexpr std::uint32_t base = 65521;
    constexpr std::size_t most = 5536; // whole vectors, and no lane overflows
    const Vec lowWeights = weights(false);
    const Vec highWeights = weights(true);
    while (count >= vecBytes) {
        const std::size_t taken = count < most ? count / vecBytes * vecBytes : most;
        Vec plain = zeros();    // of the bytes so far
        Vec before = zeros();   // of what `plain` was before each vector
        Vec weighted = zeros(); // within the vectors
        for (std::size_t i = 0; i < taken; i += vecBytes) {
            const Vec x = load(bytes + i);
            before = add32(before, plain);
            plain = add32(plain, sumsOf8(x));
            weighted = add32(weighted, multiplyAddPairs16(lowWords(x), lowWeights));
            weighted = add32(weighted, multiplyAddPairs16(highWords(x), highWeights));
        }
        const std::uint64_t a = sum & 0xFFFF;
        const std::uint64_t b = (sum >> 16) + a * taken + laneSum32(before) * vecBytes + laneSum32(weighted);
        sum = static_cast<std::uint32_t>(b % base) << 16 | static_cast<std::uint32_t>((a + laneSum32(plain)) % base);
        bytes += taken;
        count -= taken;
    }
    return scalar::adler32(sum, bytes, count);
}

void useFiltering(Table& table) {
    table.filterSub = filterSub;
    table.filterUp = filterUp;
    table.filterAvg = filterAvg;
    table.filterPaeth = filterPaeth;
    table.filterSums = filterSums;
    table.adler32 = adler32;
}

} // namespace
} // namespace pixkit::kernels
