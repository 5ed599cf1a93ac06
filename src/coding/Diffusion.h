// Error diffusion after R. W. Floyd and L. Steinberg (1976): what a pixel lost when it got one of few colours is passed
// on to those that come after it.
#pragma once
#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace pixkit {

// What is owed to the pixels of the row at hand and of the one below.
template <std::size_t channels>
class Diffusion {
  public:
    explicit Diffusion(std::size_t width) : m_here(width + 2), m_below(width + 2) {}

    // Rounded to whole values.
    int owed(std::size_t x, std::size_t channel = 0) const noexcept { return (m_here[x + 1][channel] + 8) >> 4; }

    // Of the error 7 sixteenths go to the next pixel; 3, 5 and 1 to those below the last, this and the next one.
    // `ahead` is 1 in a row that is gone through from the left, -1 in one from the right.
    void spread(std::size_t x, int ahead, int error, std::size_t channel = 0) noexcept {
        const std::size_t at = x + 1;
        const std::size_t next = at + static_cast<std::size_t>(ahead), last = at - static_cast<std::size_t>(ahead);
        m_here[next][channel] += 7 * error;
        m_below[last][channel] += 3 * error;
        m_below[at][channel] += 5 * error;
        m_below[next][channel] += error;
    }

    void nextRow() {
        std::swap(m_here, m_below);
        std::ranges::fill(m_below, std::array<int, channels>{});
    }

  private:
    std::vector<std::array<int, channels>> m_here, m_below; // in sixteenths; one pixel more on each side
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
