// Which pixels of a row or column make a pixel at another size, and how much each counts.
#pragma once
#include "shared/enumerations.h"
#include <cstddef>
#include <cstdint>
#include <span>
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
    // Of pixel i of the result.
    Taps weigh(std::size_t i);
    // So many weights are held at a time, or hundreds of megabytes would be taken where millions of pixels make one.
    // No picture has enough pixels for more along both its axes.
    static constexpr std::size_t mostAtOnce = 32768;
    // The weights of the pixel that was weighed last, from the one of its source pixel `tap` on: a multiple of
    // mostAtOnce, each once, in their order. They fit 16 bits, and with any bytes their sums fit 31. Valid until the
    // next call.
    std::span<const std::int16_t> weightsFrom(std::size_t tap);

  private:
    // What distances from the centre weigh, in their place.
    void weighDistances(std::span<double> distances) const noexcept;
    // Exact weights, not yet divided by their sum, from a tap on.
    std::span<const double> exactFrom(std::size_t tap);
    int rounded(double exact) const noexcept;

    std::size_t m_from, m_to;
    double m_begin = 0, m_length; // what the result is made of
    eResampleFilters m_filter;
    double m_scale, m_radius; // the latter in source pixels
    unsigned m_bits;
    std::size_t m_mostTaps;
    // Of the pixel that was weighed last.
    Taps m_taps{};
    double m_centre = 0, m_sum = 0;
    std::size_t m_largest = 0; // which rounded weight is the largest, the first of several
    int m_largestWeight = 0;   // and what it is, with what rounding has left over
    bool m_sumsAreRounded = false;
    std::size_t m_exactFrom = 0; // the tap that the exact weights begin with, of those that were worked out last
    std::vector<double> m_exact;
    std::vector<std::int16_t> m_weights;
    double m_exactUpTo = 0; // where sums are rounded: of all weights so far
    int m_givenUpTo = 0;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
