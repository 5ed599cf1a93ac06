#include "shared/FilterAxis.h"
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace pixkit {

namespace {

double mitchell(double x) {
    // ((12 - 9B - 6C) x^3 + (-18 + 12B + 6C) x^2 + 6 - 2B) / 6 up to 1, then
    // ((-B - 6C) x^3 + (6B + 30C) x^2 + (-12B - 48C) x + 8B + 24C) / 6, with B = C = 1/3.
    if (x < 1) return ((7 * x - 12) * x * x + 16.0 / 3) / 6;
    return x < 2 ? (((-7.0 / 3 * x + 12) * x - 20) * x + 32.0 / 3) / 6 : 0;
}

// Several numbers at a time, as each step of a sine waits for a division, and those of others need not wait with it.
using Numbers = std::array<double, 8>;

// The sines between 0 and pi, to 14 digits. Libraries of C differ in the last digit of theirs, and pictures must not.
Numbers sinesUpToPi(Numbers x) {
    Numbers squares, sums{};
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = std::min(x[i], std::numbers::pi - x[i]);
        squares[i] = x[i] * x[i];
    }
    for (int n = 20; n > 0; n -= 2)
        for (std::size_t i = 0; i < x.size(); ++i)
            sums[i] = (1 - sums[i]) * squares[i] / (n * (n + 1));
    for (std::size_t i = 0; i < x.size(); ++i)
        x[i] *= 1 - sums[i];
    return x;
}

// With y = pi x / 3 and s = sin(y): sinc(x / 3) is s / y, and sinc(x) is sin(3 y) / (3 y) = (3 s - 4 s^3) / (3 y).
void lanczos3(std::span<double> x) {
    Numbers y{};
    for (std::size_t i = 0; i < x.size(); ++i)
        y[i] = std::numbers::pi / 3 * x[i];
    const Numbers sines = sinesUpToPi(y);
    for (std::size_t i = 0; i < x.size(); ++i) {
        const double weight = sines[i] * sines[i] * (3 - 4 * sines[i] * sines[i]) / (3 * y[i] * y[i]);
        x[i] = x[i] >= 3 ? 0 : x[i] == 0 ? 1 : weight;
    }
}

} // namespace

eResampleFilters filterFor(eResampleFilters filter, std::size_t from, std::size_t to) noexcept {
    switch (filter) {
    case resampleAuto:
        return to > from ? resampleMitchell : resampleLanczos3;
    case resampleTriangle:
    case resampleMitchell:
    case resampleLanczos3:
        return filter;
    default:
        return resampleArea;
    }
}

FilterAxis::FilterAxis(std::size_t from, std::size_t to, eResampleFilters filter, unsigned mostBits)
    : m_from(from), m_to(to), m_length(static_cast<double>(from)), m_filter(filterFor(filter, from, to)),
      m_scale(std::max(static_cast<double>(from) / static_cast<double>(to), 1.0)), m_radius(0), m_bits(14),
      m_mostTaps(1) {
    if (from != to) {
        const double ratio = static_cast<double>(from) / static_cast<double>(to);
        switch (m_filter) {
        case resampleTriangle:
            m_radius = m_scale;
            break;
        case resampleMitchell:
            m_radius = 2 * m_scale;
            break;
        case resampleLanczos3:
            m_radius = 3 * m_scale;
            break;
        default:
            m_radius = ratio / 2 + 0.5; // half of both pixels
        }
        m_mostTaps = std::min(from, static_cast<std::size_t>(2 * m_radius) + 2);
    }
    // No weight is twice the mean of one result's pixels or more, not even at the ends.
    for (double largest = m_scale; m_bits < mostBits && largest >= 2; largest /= 2)
        ++m_bits;
    m_exact.resize(std::min(m_mostTaps, mostAtOnce));
    m_weights.resize(m_exact.size());
}

void FilterAxis::weighDistances(std::span<double> distances) const noexcept {
    switch (m_filter) {
    case resampleTriangle:
        for (double& each : distances)
            each = std::max(0.0, 1 - each / m_scale);
        break;
    case resampleMitchell:
        for (double& each : distances)
            each = mitchell(each / m_scale);
        break;
    case resampleLanczos3:
        for (double& each : distances)
            each /= m_scale;
        for (; !distances.empty(); distances = distances.subspan(std::min(distances.size(), Numbers().size())))
            lanczos3(distances.first(std::min(distances.size(), Numbers().size())));
        break;
    default:
        for (double& each : distances)
            each = std::clamp(m_radius - each, 0.0, std::min(2 * m_radius - 1, 1.0));
    }
}

std::span<const double> FilterAxis::exactFrom(std::size_t tap) {
    const auto exact = std::span(m_exact).first(std::min(m_taps.count - tap, m_exact.size()));
    if (m_exactFrom == tap) return exact;
    m_exactFrom = tap;
    for (double& each : exact)
        each = std::abs(static_cast<double>(m_taps.first + tap++) + 0.5 - m_centre);
    weighDistances(exact);
    return exact;
}

int FilterAxis::rounded(double exact) const noexcept {
    return static_cast<int>(std::floor(exact / m_sum * (1 << m_bits) + 0.5));
}

FilterAxis::Taps FilterAxis::weigh(std::size_t i) {
    if (m_from == m_to) return m_taps = {i, 1};
    m_centre = m_begin + (2 * static_cast<double>(i) + 1) * m_length / (2 * static_cast<double>(m_to));
    const double most = static_cast<double>(m_from - 1);
    const auto first = static_cast<std::size_t>(std::clamp(std::ceil(m_centre - m_radius - 0.5), 0.0, most));
    const auto last = static_cast<std::size_t>(std::clamp(std::floor(m_centre + m_radius - 0.5), 0.0, most));
    m_taps = {first, std::min(last - first + 1, m_mostTaps)};
    m_exactFrom = m_taps.count; // none yet
    m_sum = 0;
    for (std::size_t tap = 0; tap < m_taps.count; tap += mostAtOnce)
        for (const double weight : exactFrom(tap))
            m_sum += weight;
    // What rounding has left over, or taken too much, goes to the weight that feels it least.
    const int one = 1 << m_bits;
    int rest = one;
    m_largestWeight = 0;
    for (std::size_t tap = 0; tap < m_taps.count && m_sum < 4.0 * one; tap += mostAtOnce) { // or all become nothing
        std::size_t place = tap;
        for (const double exact : exactFrom(tap)) {
            const int weight = rounded(exact);
            rest -= weight;
            if (weight > m_largestWeight) {
                m_largestWeight = weight;
                m_largest = place;
            }
            ++place;
        }
    }
    // Where hundreds of thousands of pixels make one, each weight is next to nothing: their sums are rounded.
    m_sumsAreRounded = std::abs(rest) > m_largestWeight / 2;
    m_largestWeight += rest;
    return m_taps;
}

std::span<const std::int16_t> FilterAxis::weightsFrom(std::size_t tap) {
    if (m_from == m_to) {
        m_weights[0] = static_cast<std::int16_t>(1 << m_bits);
        return m_weights;
    }
    const std::span<const double> exact = exactFrom(tap);
    if (m_sumsAreRounded) {
        if (tap == 0) m_exactUpTo = m_givenUpTo = 0;
        for (std::size_t k = 0; k < exact.size(); ++k) {
            m_exactUpTo += exact[k];
            const int upTo = rounded(m_exactUpTo);
            m_weights[k] = static_cast<std::int16_t>(upTo - m_givenUpTo);
            m_givenUpTo = upTo;
        }
    } else {
        std::ranges::transform(exact, m_weights.begin(),
                               [&](double weight) { return static_cast<std::int16_t>(rounded(weight)); });
        if (m_largest - tap < exact.size()) m_weights[m_largest - tap] = static_cast<std::int16_t>(m_largestWeight);
    }
    return std::span(m_weights).first(exact.size());
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
