// The orders in which PNG and GIF files hold the pixels of a picture: row by row, or coarse to fine in several passes.
#pragma once
#include <array>
#include <cstddef>
#include <span>

namespace pixkit {

// The pixels at startColumn + i * columnStep, startRow + j * rowStep.
struct InterlacePass {
    std::size_t startRow, startColumn, rowStep, columnStep;

    // How many there are in a picture; a small one may have none.
    constexpr std::size_t rows(std::size_t height) const noexcept { return count(height, startRow, rowStep); }
    constexpr std::size_t columns(std::size_t width) const noexcept { return count(width, startColumn, columnStep); }

  private:
    static constexpr std::size_t count(std::size_t size, std::size_t start, std::size_t step) noexcept {
        return size > start ? (size - start + step - 1) / step : 0;
    }
};

inline constexpr std::array<InterlacePass, 1> wholePicture = {{{0, 0, 1, 1}}};

// PNG standard, 8.2
inline constexpr std::array<InterlacePass, 7> adam7 = {
    {{0, 0, 8, 8}, {0, 4, 8, 8}, {4, 0, 8, 4}, {0, 2, 4, 4}, {2, 0, 4, 2}, {0, 1, 2, 2}, {1, 0, 2, 1}}};

inline std::span<const InterlacePass> pngPasses(bool isInterlaced) noexcept {
    if (isInterlaced) return adam7;
    return wholePicture;
}

// GIF89a, appendix E
inline constexpr std::array<InterlacePass, 4> gifPasses = {{{0, 0, 8, 1}, {4, 0, 8, 1}, {2, 0, 4, 1}, {1, 0, 2, 1}}};

} // namespace pixkit
// SPDX-License-Identifier: MIT
