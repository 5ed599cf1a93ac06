// Which pixels of a row or column make a pixel at another size, and how much each counts.
#pragma once
#include "shared/enumerations.h"
#include <cstddef>
#include <cstdint>
#include <vector>

namespace pixkit {

// The filter that eResampleFilters stands for along an axis: where resampleAuto leads, and resampleArea for what is no
// filter.
eResampleFilters filterFor(eResampleFilters filter, std::size_t from, std::size_t to) noexcept;

// One axis of a picture, of which `from` pixels become `to`. Pixel i of the result has its centre at
// (i + 1/2) * from / to of the source, whose pixels j have theirs at j + 1/2. At distances up to the filter's radius,
// in pixels of the source where the axis grows and of the result where it shrinks, source pixels count by:
// - resampleArea: how much of the source pixel lies within the pixel of the result.
// - resampleTriangle: 1 - |x|, up to 1.
// - resampleMitchell: the piecewise cubic of Mitchell and Netravali, "Reconstruction Filters in Computer Graphics"
//   (SIGGRAPH 1988), with B = C = 1/3, up to 2.
// - resampleLanczos3: sinc(x) sinc(x / 3) with sinc(x) = sin(pi x) / (pi x), up to 3.
// Of an axis that stays as it is every pixel counts alone, for itself. Weights are whole numbers, whose sum is the same
// for every pixel also at the ends, where there are fewer: nothing becomes darker there.
class FilterAxis {
  public:
    // The weights of a pixel sum up to 1 << bits(). With more pixels in a sum there are more of these bits, as far as
    // `mostBits` (14 or more), so that what is lost by rounding them does not grow.
    FilterAxis(std::size_t from, std::size_t to, eResampleFilters filter, unsigned mostBits);

    unsigned bits() const noexcept { return m_bits; }
    // Source pixels per pixel of the result, at least 1.
    double scale() const noexcept { return m_scale; }
    // Of any pixel, and not more than the source has.
    std::size_t mostTaps() const noexcept { return m_mostTaps; }

    // From now on the result is made of `length` pixels of the source from `begin` on, which are almost all of it: by
    // less than one pixel less. The weights stay as wide as they are for all.
    void narrow(double begin, double length) noexcept {
        m_begin = begin;
        m_length = length;
    }

    struct Taps {
        std::size_t first, count; // source pixels, at least one
    };
    // The weights of pixel i of the result. They fit 16 bits, and with any bytes their sums fit 31. Valid until the
    // next call.
    Taps weigh(std::size_t i);
    const std::vector<std::int16_t>& weights() const noexcept { return m_weights; }

  private:
    double weightAt(double distance) const noexcept;

    std::size_t m_from, m_to;
    double m_begin = 0, m_length; // what the result is made of
    eResampleFilters m_filter;
    double m_scale, m_radius; // the latter in source pixels
    unsigned m_bits;
    std::size_t m_mostTaps;
    std::vector<double> m_exact;
    std::vector<std::int16_t> m_weights;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
