// Reference kernels that undo the PNG row filters, in the words of the PNG standard (9.2 to 9.4).
#pragma once
#include "kernels/reference.h"

#include <cstdlib>

namespace pixkit::kernels {
namespace {

std::uint8_t sum(unsigned x, unsigned y) {
    return static_cast<std::uint8_t>(x + y);
}

// Ties go to the left, then to the byte above.
std::uint8_t paethPredictor(int left, int above, int upperLeft) {
    const int estimate = left + above - upperLeft;
    const int toLeft = std::abs(estimate - left);
    const int toAbove = std::abs(estimate - above);
    const int toUpperLeft = std::abs(estimate - upperLeft);
    if (toLeft <= toAbove && toLeft <= toUpperLeft) return static_cast<std::uint8_t>(left);
    return static_cast<std::uint8_t>(toAbove <= toUpperLeft ? above : upperLeft);
}

} // namespace

void scalar::unfilterSubFrom(std::uint8_t* row, std::size_t from, std::size_t bytes, std::size_t step) {
    for (std::size_t i = from < step ? step : from; i < bytes; ++i)
        row[i] = sum(row[i], row[i - step]);
}

void scalar::unfilterAvgFrom(std::uint8_t* row, const std::uint8_t* above, std::size_t from, std::size_t bytes,
                             std::size_t step) {
    for (std::size_t i = from; i < bytes; ++i) {
        const unsigned left = i < step ? 0 : row[i - step];
        row[i] = sum(row[i], (left + above[i]) / 2);
    }
}

void scalar::unfilterPaethFrom(std::uint8_t* row, const std::uint8_t* above, std::size_t from, std::size_t bytes,
                               std::size_t step) {
    for (std::size_t i = from; i < bytes; ++i) {
        const int left = i < step ? 0 : row[i - step];
        const int upperLeft = i < step ? 0 : above[i - step];
        row[i] = sum(row[i], paethPredictor(left, above[i], upperLeft));
    }
}

namespace {

void unfilterSub(std::uint8_t* row, std::size_t bytes, std::size_t step) {
    scalar::unfilterSubFrom(row, 0, bytes, step);
}

void unfilterUp(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i)
        row[i] = sum(row[i], above[i]);
}

void unfilterAvg(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step) {
    scalar::unfilterAvgFrom(row, above, 0, bytes, step);
}

void unfilterAvgOfFirstRow(std::uint8_t* row, std::size_t bytes, std::size_t step) {
    for (std::size_t i = step; i < bytes; ++i)
        row[i] = sum(row[i], row[i - step] / 2U);
}

void unfilterPaeth(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step) {
    scalar::unfilterPaethFrom(row, above, 0, bytes, step);
}

void unfilterPaethTwice(std::uint8_t* row, std::uint8_t* below, const std::uint8_t* above, std::size_t bytes,
                        std::size_t step) {
    unfilterPaeth(row, above, bytes, step);
    unfilterPaeth(below, row, bytes, step);
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
