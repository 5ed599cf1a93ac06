#include "codecs/png/PngFilters.h"
#include "kernels/kernels.h"

namespace pixkit {

void decodeFilter(std::uint8_t filterType, std::uint8_t* row, const std::uint8_t* above, std::size_t bytes,
                  std::size_t stepVal) noexcept {
    switch (PngFilterType{filterType}) {
    case PngFilterType::sub:
        DecodeFilter_Sub(row, bytes, stepVal);
        break;
    case PngFilterType::up:
        DecodeFilter_Up(row, above, bytes);
        break;
    case PngFilterType::average:
        DecodeFilter_Avg(row, above, bytes, stepVal);
        break;
    case PngFilterType::paeth:
        DecodeFilter_Paeth(row, above, bytes, stepVal);
        break;
    default:
        break;
    }
}

void DecodeFilter_Sub(std::uint8_t* row, std::size_t bytes, std::size_t stepVal) noexcept {
    kernels::table().unfilterSub(row, bytes, stepVal);
}

void DecodeFilter_Up(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes) noexcept {
    if (above != nullptr) kernels::table().unfilterUp(row, above, bytes);
}

void DecodeFilter_Avg(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t stepVal) noexcept {
    if (above != nullptr) {
        kernels::table().unfilterAvg(row, above, bytes, stepVal);
    } else {
        kernels::table().unfilterAvgOfFirstRow(row, bytes, stepVal);
    }
}

void DecodeFilter_Paeth(std::uint8_t* row, const std::uint8_t* above, std::size_t bytes, std::size_t stepVal) noexcept {
    if (above != nullptr) {
        kernels::table().unfilterPaeth(row, above, bytes, stepVal);
    } else {
        DecodeFilter_Sub(row, bytes, stepVal); // with nothing above, the predictor is the byte on the left
    }
}

void DecodeFilter_Paeth(std::uint8_t* row, std::uint8_t* below, const std::uint8_t* above, std::size_t bytes,
                        std::size_t stepVal) noexcept {
    kernels::table().unfilterPaethTwice(row, below, above, bytes, stepVal);
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
