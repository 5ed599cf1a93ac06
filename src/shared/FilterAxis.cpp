#include "shared/FilterAxis.h"
#include <algorithm>
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

// The sine between 0 and pi, to 14 digits. Libraries of C differ in the last digit of theirs, and pictures must not.
double sineUpToPi(double x) {
    x = std::min(x, std::numbers::pi - x);
    const double square = x * x;
    double sum = 0;
    for (int n = 20; n > 0; n -= 2)
        sum = (1 - sum) * square / (n * (n + 1));
    return x * (1 - sum);
}

// With y = pi x / 3 and s = sin(y): sinc(x / 3) is s / y, and sinc(x) is sin(3 y) / (3 y) = (3 s - 4 s^3) / (3 y).
double lanczos3(double x) {
    if (x >= 3) return 0;
    if (x == 0) return 1;
    const double y = std::numbers::pi / 3 * x;
    const double sine = sineUpToPi(y);
    return sine * sine * (3 - 4 * sine * sine) / (3 * y * y);
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
    m_exact.resize(m_mostTaps);
    m_weights.resize(m_mostTaps);
}

double FilterAxis::weightAt(double distance) const noexcept {
    distance = std::abs(distance);
    switch (m_filter) {
    case resampleTriangle:
        return std::max(0.0, 1 - distance / m_scale);
    case resampleMitchell:
        return mitchell(distance / m_scale);
    case resampleLanczos3:
        return lanczos3(distance / m_scale);
    default:
        return std::clamp(m_radius - distance, 0.0, std::min(2 * m_radius - 1, 1.0));
    }
}

FilterAxis::Taps FilterAxis::weigh(std::size_t i) {
    const double one = 1 << m_bits;
    if (m_from == m_to) {
        m_weights[0] = static_cast<std::int16_t>(one);
        return {i, 1};
    }
    const double centre = m_begin + (2 * static_cast<double>(i) + 1) * m_length / (2 * static_cast<double>(m_to));
    const double most = static_cast<double>(m_from - 1);
    const auto first = static_cast<std::size_t>(std::clamp(std::ceil(centre - m_radius - 0.5), 0.0, most));
    const auto last = static_cast<std::size_t>(std::clamp(std::floor(centre + m_radius - 0.5), 0.0, most));
    const std::size_t count = std::min(last - first + 1, m_mostTaps);
    double sum = 0;
    for (std::size_t tap = 0; tap < count; ++tap)
        sum += m_exact[tap] = weightAt(static_cast<double>(first + tap) + 0.5 - centre);
    int rest = 1 << m_bits;
    for (std::size_t tap = 0; tap < count; ++tap) {
        m_weights[tap] = static_cast<std::int16_t>(std::floor(m_exact[tap] / sum * one + 0.5));
        rest -= m_weights[tap];
    }
    // What rounding has left over, or taken too much, goes to the weight that feels it least.
    std::int16_t& largest =
        *std::max_element(m_weights.begin(), m_weights.begin() + static_cast<std::ptrdiff_t>(count));
    if (std::abs(rest) <= largest / 2) {
        largest = static_cast<std::int16_t>(largest + rest);
        return {first, count};
    }
    // Where hundreds of thousands of pixels make one, each weight is next to nothing: their sums are rounded.
    double exact = 0;
    int given = 0;
    for (std::size_t tap = 0; tap < count; ++tap) {
        exact += m_exact[tap];
        const int upTo = static_cast<int>(std::floor(exact / sum * one + 0.5));
        m_weights[tap] = static_cast<std::int16_t>(upTo - given);
        given = upTo;
    }
    return {first, count};
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
