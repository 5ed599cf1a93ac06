#include "codecs/bmp/BmpWideRows.h"
#include <algorithm>
#include <cmath>

namespace pixkit {

namespace {

constexpr std::int32_t one = 1 << 13;

double lightOf(double srgb) {
    return srgb <= 0.04045 ? srgb / 12.92 : std::pow((srgb + 0.055) / 1.055, 2.4);
}

} // namespace

BmpWideRows::BmpWideRows() {
    for (std::size_t i = 0; i < m_least.size(); ++i)
        m_least[i] = static_cast<std::int16_t>(std::ceil(one * lightOf((static_cast<double>(i) + 0.5) / 255)));
}

void BmpWideRows::convert(std::uint8_t* dst, const std::uint8_t* src, std::size_t count) const {
    const auto sample = [&](std::size_t channel) {
        return static_cast<std::int16_t>(src[2 * channel] | src[2 * channel + 1] << 8);
    };
    for (; count > 0; --count, dst += 4, src += 8) {
        for (std::size_t channel = 0; channel < 3; ++channel)
            dst[channel] =
                static_cast<std::uint8_t>(std::ranges::upper_bound(m_least, sample(channel)) - m_least.begin());
        const std::int32_t alpha = std::clamp<std::int32_t>(sample(3), 0, one);
        dst[3] = static_cast<std::uint8_t>((alpha * 255 + one / 2) / one);
    }
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
