#include "codecs/png/PngFilters.h"
#include "kernels/kernels.h"

namespace pixkit {

namespace {

enum PngFilter : std::uint8_t { filterSub = 1, filterUp = 2, filterAvg = 3, filterPaeth = 4 };

// With zeros above, Up changes nothing, Paeth predicts the byte on the left, and Avg takes half of it.
void decodeFilterOfFirstRow(std::uint8_t filterType, std::uint8_t* row, std::size_t bytes,
                            std::size_t stepVal) noexcept {
    if (filterType == filterSub || filterType == filterPaeth) {
        kernels::table().unfilterSub(row, bytes, stepVal);
    } else if (filterType == filterAvg) {
        for (std::size_t i = stepVal; i < bytes; ++i) {
            row[i] = static_cast<std::uint8_t>(row[i] + row[i - stepVal] / 2);
        }
    }
}

} // namespace

void decodeFilter(std::uint8_t filterType, std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                  std::size_t stepVal) noexcept {
    if (above == nullptr) {
        decodeFilterOfFirstRow(filterType, row, bytes, stepVal);
        return;
    }
    const auto& kernel = kernels::table();
    switch (filterType) {
    case filterSub:
        kernel.unfilterSub(row, bytes, stepVal);
        break;
    case filterUp:
        kernel.unfilterUp(row, above, bytes);
        break;
    case filterAvg:
        kernel.unfilterAvg(row, above, bytes, stepVal);
        break;
    case filterPaeth:
        kernel.unfilterPaeth(row, above, bytes, stepVal);
        break;
    default:
        break;
    }
}

} // namespace pixkit
