// Reference kernels for weighted sums of pixels.
#pragma once
#include "kernels/reference.h"

#include <algorithm>

namespace pixkit::kernels {
namespace {

void sumAlongRow(std::int16_t* dst, const std::uint8_t* src, const TapsAlongRow& along, std::size_t count) {
    const std::int16_t* weights = along.weights;
    for (std::size_t i = 0; i < count; ++i, weights += along.taps) {
        const std::uint8_t* const first = src + along.offsets[i];
        for (std::size_t channel = 0; channel < 4; ++channel) {
            std::int32_t sum = 1 << (along.shift - 1);
            for (std::size_t tap = 0; tap < along.taps; ++tap)
                sum += weights[tapPlace(tap)] * first[4 * tap + channel];
            dst[4 * i + channel] = static_cast<std::int16_t>(sum >> along.shift);
        }
    }
}

void sumRows(std::uint8_t* dst, const WeighedRows& weighed, std::size_t count, bool isOpaque) {
    for (std::size_t i = 0; i < 4 * count; i += 4) {
        int pixel[4];
        for (std::size_t channel = 0; channel < 4; ++channel) {
            std::int32_t sum = 1 << (weighed.shift - 1);
            for (std::size_t row = 0; row < weighed.count; ++row)
                sum += weighed.weights[row] * weighed.rows[row][i + channel];
            pixel[channel] = std::clamp(sum >> weighed.shift, 0, 255);
        }
        if (isOpaque) pixel[3] = 255;
        for (std::size_t channel = 0; channel < 4; ++channel)
            dst[i + channel] = static_cast<std::uint8_t>(std::min(pixel[channel], pixel[3]));
    }
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
