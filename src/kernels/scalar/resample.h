// Reference kernels for resampling.
#pragma once
#include "kernels/reference.h"

#include <cstring>

namespace pixkit::kernels {
namespace {

void gatherPixels(std::uint8_t* dst, const std::uint8_t* src, const std::int32_t* offsets, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        std::memcpy(dst + 4 * i, src + offsets[i], 4);
}

template <class Rows>
void sample(std::uint8_t* dst, const Rows& rows, const std::int32_t* offsets, const double* nearWeights,
            const double* farWeights, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        for (int channel = 0; channel < 4; ++channel) {
            auto* p = rows.first + offsets[i] + channel;
            double sum = p[0] * (nearWeights[i] * rows.firstWeight);
            sum += p[4] * (farWeights[i] * rows.firstWeight);
            if (rows.second != nullptr) {
                p = rows.second + offsets[i] + channel;
                sum += p[0] * (nearWeights[i] * rows.secondWeight);
                sum += p[4] * (farWeights[i] * rows.secondWeight);
            }
            dst[4 * i + static_cast<std::size_t>(channel)] = static_cast<std::uint8_t>(sum);
        }
    }
}

void sampleBilinear(std::uint8_t* dst, const WeightedRows& rows, const std::int32_t* offsets, const double* nearWeights,
                    const double* farWeights, std::size_t count) {
    sample(dst, rows, offsets, nearWeights, farWeights, count);
}

void sampleWidened(std::uint8_t* dst, const WeightedWideRows& rows, const std::int32_t* offsets,
                   const double* nearWeights, const double* farWeights, std::size_t count) {
    sample(dst, rows, offsets, nearWeights, farWeights, count);
}

void widenPixels(double* dst, const std::uint8_t* src, std::size_t count) {
    for (std::size_t i = 0; i < 4 * count; ++i)
        dst[i] = src[i];
}

void mixPairs(std::uint16_t* dst, const std::uint8_t* src, const PairPattern& pattern, std::size_t groups) {
    for (; groups > 0; --groups, src += std::size_t{4} * pattern.advance) {
        for (std::size_t column = 0; column < 16; ++column) {
            const std::uint8_t* const p =
                src + std::size_t{4} * (pattern.starts[column / 4] + pattern.places[2 * column]);
            for (int channel = 0; channel < 4; ++channel)
                *dst++ = static_cast<std::uint16_t>(p[channel] * pattern.weights[8 * column] +
                                                    p[channel + 4] * pattern.weights[8 * column + 1]);
        }
    }
}

void mixRows(std::uint8_t* dst, const std::uint16_t* first, const std::uint16_t* second, std::uint32_t firstWeight,
             std::uint32_t secondWeight, std::size_t count) {
    for (std::size_t i = 0; i < 4 * count; ++i)
        dst[i] = static_cast<std::uint8_t>((first[i] * firstWeight + second[i] * secondWeight) >> 8);
}

// Steps are taken without signs, because the one behind the last pixel may leave the range of positions.
class Walker {
  public:
    explicit Walker(const PixelWalk& walk) : m_walk(walk), m_u(bits(walk.u)), m_v(bits(walk.v)) {}
    const std::uint8_t* pixel() const { return m_walk.origin + (m_v >> 32) * m_walk.stride + (m_u >> 32) * 4; }
    unsigned columnFraction() const { return static_cast<unsigned>(m_u >> 24) & 255U; }
    unsigned rowFraction() const { return static_cast<unsigned>(m_v >> 24) & 255U; }
    void step() {
        m_u += bits(m_walk.du);
        m_v += bits(m_walk.dv);
    }

  private:
    static std::uint64_t bits(std::int64_t value) { return static_cast<std::uint64_t>(value); }
    const PixelWalk m_walk;
    std::uint64_t m_u, m_v;
};

void walkNearest(std::uint8_t* dst, const PixelWalk& walk, std::size_t count) {
    Walker walker(walk);
    for (; count > 0; --count, dst += 4, walker.step())
        std::memcpy(dst, walker.pixel(), 4);
}

void walkBilinear(std::uint8_t* dst, const PixelWalk& walk, std::size_t count) {
    Walker walker(walk);
    for (; count > 0; --count, dst += 4, walker.step()) {
        const std::uint8_t* const p = walker.pixel();
        const std::uint8_t* const next = p + walk.stride;
        const unsigned fx = walker.columnFraction();
        const unsigned fy = walker.rowFraction();
        for (int channel = 0; channel < 4; ++channel) {
            const unsigned left = p[channel] * (256 - fy) + next[channel] * fy;
            const unsigned right = p[channel + 4] * (256 - fy) + next[channel + 4] * fy;
            dst[channel] = static_cast<std::uint8_t>((left * (256 - fx) + right * fx) >> 16);
        }
    }
}

} // namespace
} // namespace pixkit::kernels
// SPDX-License-Identifier: MIT
