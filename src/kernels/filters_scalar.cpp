// Reference kernels for the PNG row filters, in the words of the PNG standard (9.2 to 9.4).
#include "kernels/scalar.h"

#include <cstdlib>

namespace pixkit::kernels::scalar {

namespace {

std::uint8_t difference(unsigned x, unsigned y) {
    return static_cast<std::uint8_t>(x - y);
}

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

void unfilterSubFrom(std::uint8_t* row, std::size_t from, std::size_t bytes, std::size_t step) {
    for (std::size_t i = from < step ? step : from; i < bytes; ++i)
        row[i] = sum(row[i], row[i - step]);
}

void unfilterAvgFrom(std::uint8_t* row, const std::uint8_t* above, std::size_t from, std::size_t bytes,
                     std::size_t step) {
    for (std::size_t i = from; i < bytes; ++i) {
        const unsigned left = i < step ? 0 : row[i - step];
        row[i] = sum(row[i], (left + above[i]) / 2);
    }
}

void unfilterPaethFrom(std::uint8_t* row, const std::uint8_t* above, std::size_t from, std::size_t bytes,
                       std::size_t step) {
    for (std::size_t i = from; i < bytes; ++i) {
        const int left = i < step ? 0 : row[i - step];
        const int upperLeft = i < step ? 0 : above[i - step];
        row[i] = sum(row[i], paethPredictor(left, above[i], upperLeft));
    }
}

void unfilterSub(std::uint8_t* row, std::size_t bytes, std::size_t step) {
    unfilterSubFrom(row, 0, bytes, step);
}

void unfilterUp(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i)
        row[i] = sum(row[i], above[i]);
}

void unfilterAvg(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step) {
    unfilterAvgFrom(row, above, 0, bytes, step);
}

void unfilterAvgOfFirstRow(std::uint8_t* row, std::size_t bytes, std::size_t step) {
    for (std::size_t i = step; i < bytes; ++i)
        row[i] = sum(row[i], row[i - step] / 2U);
}

void unfilterPaeth(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t step) {
    unfilterPaethFrom(row, above, 0, bytes, step);
}

void filterSubPart(std::uint8_t* dst, const std::uint8_t* row, std::size_t from, std::size_t to, std::size_t step) {
    for (std::size_t i = from; i < to; ++i)
        dst[i] = difference(row[i], i < step ? 0 : row[i - step]);
}

void filterUp(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; ++i)
        dst[i] = difference(row[i], above[i]);
}

void filterAvgPart(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t from,
                   std::size_t to, std::size_t step) {
    for (std::size_t i = from; i < to; ++i)
        dst[i] = difference(row[i], ((i < step ? 0U : row[i - step]) + above[i]) / 2);
}

void filterPaethPart(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t from,
                     std::size_t to, std::size_t step) {
    for (std::size_t i = from; i < to; ++i)
        dst[i] =
            difference(row[i], paethPredictor(i < step ? 0 : row[i - step], above[i], i < step ? 0 : above[i - step]));
}

void filterSub(std::uint8_t* dst, const std::uint8_t* row, std::size_t bytes, std::size_t step) {
    filterSubPart(dst, row, 0, bytes, step);
}

void filterAvg(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
               std::size_t step) {
    filterAvgPart(dst, row, above, 0, bytes, step);
}

void filterPaeth(std::uint8_t* dst, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                 std::size_t step) {
    filterPaethPart(dst, row, above, 0, bytes, step);
}

void filterSumsPart(std::uint64_t* sums, const std::uint8_t* row, const std::uint8_t* above, std::size_t from,
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

void filterSums(std::uint64_t* sums, const std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                std::size_t step) {
    for (int type = 0; type < 5; ++type)
        sums[type] = 0;
    filterSumsPart(sums, row, above, 0, bytes, step);
}

} // namespace pixkit::kernels::scalar
