// Reference kernels that apply the PNG row filters, in the words of the PNG standard (9.2 to 9.4).
#pragma once
#include "kernels/scalar/unfilter.h"

namespace pixkit::kernels {
namespace {

std::uint8_t difference(unsigned x, unsigned y) {
    return static_cast<std::uint8_t>(x - y);
}

} // namespace

void scalar::filterSubPart(std::uint8_t* dst, const std::uint8_t* row, std::size_t from, std::size_t to,
                           std::size_t step) {
    for (std::size_t i = from; i < to; ++i)
        dst[i] = difference(row[i], i < step ? 0 : row[i - step]);
}

void scalar::filterAvgPart(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t from,
                           std::size_t to, std::size_t step) {
    for (std::size_t i = from; i < to; ++i)
        dst[i] = difference(row[i], ((i < step ? 0U : row[i - step]) + above[i]) / 2);
}

void scalar::filterPaethPart(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t from,
                             std::size_t to, std::size_t step) {
    for (std::size_t i = from; i < to; ++i)
        dst[i] =
            difference(row[i], paethPredictor(i < step ? 0 : row[i - step], above[i], i < step ? 0 : above[i - step]));
}

void scalar::filterSumsPart(std::uint64_t* sums, const std::uint8_t* row, const std::uint8_t* above, std::size_t from,
                            std::size_t to, std::size_t step) {
    const auto size = [](std::uint8_t byte) { return byte < 128 ? std::uint64_t{byte} : 256U - byte; };
    for (std::size_t i = from; i < to; ++i) {
        const std::uint8_t left = i < step ? std::uint8_t{0} : row[i - step];
        const std::uint8_t upperLeft = i < step ? std::uint8_t{0} : above[i - step];
        sums[0] += size(row[i]);
        sums[1] += size(difference(row[i], left));
        sums[2] += size(difference(row[i], above[i]));
        sums[3] += size(difference(row[i], (unsigned{left} + above[i]) / 2));
        sums[4] += size(difference(row[i], paethPredictor(left, above[i], upperLeft)));
    }
}

namespace {

void filterUp(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i)
        dst[i] = difference(row[i], above[i]);
}

void filterSub(std::uint8_t* dst, const std::uint8_t* row, std::size_t bytes, std::size_t step) {
    scalar::filterSubPart(dst, row, 0, bytes, step);
}

void filterAvg(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
               std::size_t step) {
    scalar::filterAvgPart(dst, row, above, 0, bytes, step);
}

void filterPaeth(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                 std::size_t step) {
    scalar::filterPaethPart(dst, row, above, 0, bytes, step);
}

void filterSums(std::uint64_t* sums, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                std::size_t step) {
    for (int type = 0; type < 5; ++type)
        sums[type] = 0;
    scalar::filterSumsPart(sums, row, above, 0, bytes, step);
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
