// Vector kernels that apply the PNG row filters.
#pragma once
#include "kernels/simd/pixels.h"

namespace pixkit::kernels {
namespace {

inline Vec distance8(Vec a, Vec b) {
    return bitOr(subtractSaturated8(a, b), subtractSaturated8(b, a));
}
// The processor's average rounds up.
inline Vec average(Vec left, Vec above) {
    return subtract8(averageRoundedUp8(left, above), bitAnd(bitXor(left, above), all8(1)));
}

// With pa = |above - c| and pb = |left - c|, the third distance |left + above - 2c| is their sum where c lies on one
// side of both, else their difference. The sum may be held at 255, which pa and pb do not exceed.
inline Vec paeth(Vec left, Vec above, Vec c) {
    const Vec pa = distance8(above, c);
    const Vec pb = distance8(left, c);
    const Vec aboveIsLower = equal8(subtractSaturated8(above, c), zeros());
    const Vec leftIsLower = equal8(subtractSaturated8(left, c), zeros());
    const Vec pc = select(equal8(aboveIsLower, leftIsLower), addSaturated8(pa, pb), distance8(pa, pb));
    const Vec least = min8(pa, min8(pb, pc));
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
    reference.filterUp(dst + rest, row + rest, above + rest, bytes - rest);
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
            totals[type] = add64(totals[type], sumsOf8(min8(result, subtract8(zeros(), result))));
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

inline void useFilter(Table& table) {
    table.filterSub = filterSub;
    table.filterUp = filterUp;
    table.filterAvg = filterAvg;
    table.filterPaeth = filterPaeth;
    table.filterSums = filterSums;
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
