// What Render has to draw, worked out a pixel at a time from its rules, and independently of the component.
#pragma once
#include "shared/modParsers.h"
#include "support/Pictures.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

namespace pixkit::test {

// Arguments of Render, and HighQualityInterpolation.
struct Drawing {
    std::int32_t destX = 0, destY = 0, destWidth = 0, destHeight = 0;
    std::int32_t SrcX = 0, SrcY = 0, srcWidth = 0, srcHeight = 0;
    std::int32_t Opacity = 100, grayScale = gsclNone;
    float LightAdjustment = 0, Angle = 0;
    bool CenterOnDestXY = false, HighQuality = false;
};

struct Picture {
    std::int64_t width, height;
    std::vector<Pixel> pixels; // top row first

    Pixel& at(std::int64_t x, std::int64_t y) { return pixels[static_cast<std::size_t>(y * width + x)]; }
    // Rows counted from the bottom; transparent outside.
    Pixel stored(std::int64_t x, std::int64_t row) {
        return x < 0 || row < 0 || x >= width || row >= height ? Pixel{} : at(x, height - 1 - row);
    }
};

class DrawByTheBook {
  public:
    DrawByTheBook(Picture source, const Drawing& drawing) : m_image(std::move(source)), m_drawing(drawing) {}

    // Whether Render succeeds; `target` receives what it draws.
    bool onto(Picture& target) {
        if (m_drawing.Opacity < 1) return true;
        const Drawing& d = m_drawing;
        if (!order(m_x, d.destX, d.destWidth, d.SrcX, d.srcWidth, m_image.width) ||
            !order(m_y, d.destY, d.destHeight, d.SrcY, d.srcHeight, m_image.height))
            return false;
        const bool isWhole = d.Angle == std::trunc(d.Angle);
        if (!std::isfinite(d.Angle) || (isWhole && std::abs(d.Angle) >= 2147483648.0F)) return false;
        const bool isTurned = !isWhole || std::fmod(d.Angle, 360.0F) != 0;
        if (!isTurned && std::max(m_x.destSize, m_y.destSize) > highest) return false;
        if (isTurned || m_x.isMirrored || m_y.isMirrored) cutOut(!isTurned);
        for (std::int64_t y = 0; y < target.height; ++y)
            for (std::int64_t x = 0; x < target.width; ++x)
                if (const auto pixel = isTurned ? turned(x, y) : placed(x, y)) blend(target.at(x, y), toned(*pixel));
        return true;
    }

  private:
    static constexpr std::int64_t highest = std::numeric_limits<std::int32_t>::max();

    struct Axis {
        std::int64_t from, size, dest, destSize;
        bool isMirrored;
        double ratio() const { return static_cast<double>(size) / static_cast<double>(destSize); }
    };

    // False where Render refuses a sum, an opposite, or a rectangle behind the image.
    bool order(Axis& axis, std::int64_t dest, std::int64_t destSize, std::int64_t from, std::int64_t size,
               std::int64_t imageSize) const {
        if (destSize == 0) destSize = imageSize;
        if (size == 0) size = imageSize;
        from = std::max<std::int64_t>(from, 0);
        if (size < 0) {
            size = -size;
            destSize = -destSize;
        }
        if (size > highest || destSize > highest || from + size > highest || from >= imageSize) return false;
        const std::int64_t absolute = std::abs(destSize);
        if (m_drawing.CenterOnDestXY) {
            dest -= absolute / 2;
            if (absolute > highest || dest < -highest - 1) return false;
        }
        axis = {from, std::min(size, imageSize - from), dest, absolute, destSize < 0};
        return true;
    }

    // Only the source rectangle remains of the image, mirrored if asked for.
    void cutOut(bool isMirroring) {
        Picture part{m_x.size, m_y.size, std::vector<Pixel>(static_cast<std::size_t>(m_x.size * m_y.size))};
        for (std::int64_t y = 0; y < part.height; ++y)
            for (std::int64_t x = 0; x < part.width; ++x)
                part.at(isMirroring && m_x.isMirrored ? part.width - 1 - x : x,
                        isMirroring && m_y.isMirrored ? part.height - 1 - y : y) =
                    m_image.at(m_x.from + x, m_y.from + y);
        m_image = std::move(part);
        m_x.from = m_y.from = 0;
    }

    // Every source pixel by its weight, rows from the bottom.
    template <class Weight>
    Pixel mean(std::int64_t x, std::int64_t row, std::int64_t row2, Weight left, Weight right, Weight first,
               Weight second) {
        Pixel result;
        for (std::size_t channel = 0; channel < 4; ++channel) {
            const auto byte = [&](std::int64_t u, std::int64_t v) {
                return static_cast<Weight>(m_image.stored(u, v)[channel]);
            };
            const Weight sum = byte(x, row) * (left * first) + byte(x + 1, row) * (right * first) +
                               byte(x, row2) * (left * second) + byte(x + 1, row2) * (right * second);
            result[channel] = static_cast<std::uint8_t>(std::is_integral_v<Weight> ? sum / 65536 : sum);
        }
        return result;
    }

    // Positions count without centring, rows from the bottom. With interpolation, a column mixes with the next one of
    // the rectangle, and a row, oddly, with the one below by the rest of its fraction, from wherever in the image.
    std::optional<Pixel> placed(std::int64_t destX, std::int64_t destY) {
        const std::int64_t x = destX - m_x.dest;
        const std::int64_t row = m_y.dest + m_y.destSize - 1 - destY;
        if (x < 0 || row < 0 || x >= m_x.destSize || row >= m_y.destSize) return {};
        const std::int64_t lowest = m_image.height - m_y.size - m_y.from;
        if (m_x.size == m_x.destSize && m_y.size == m_y.destSize) return m_image.stored(m_x.from + x, lowest + row);
        const double u = static_cast<double>(x) * m_x.ratio() + static_cast<double>(m_x.from);
        const double v = static_cast<double>(row) * m_y.ratio() + static_cast<double>(lowest);
        const std::int64_t iX = std::min(static_cast<std::int64_t>(u), m_x.from + m_x.size - 1);
        const std::int64_t iY = std::min(static_cast<std::int64_t>(v), lowest + m_y.size - 1);
        if (!m_drawing.HighQuality) return m_image.stored(iX, iY);
        const double fX = iX < m_x.from + m_x.size - 1 ? u - static_cast<double>(iX) : 0.0;
        const double fY = iY > 0 ? 1.0 - (v - static_cast<double>(iY)) : 0.0;
        return mean(iX, iY, iY - 1, 1.0 - fX, 1.0 - std::abs(fX - 1.0), 1.0 - fY, 1.0 - std::abs(1.0 - fY));
    }

    // The destination's pixel centres, turned back. Interpolation is by steps of 1/256, and fades into nothing.
    std::optional<Pixel> turned(std::int64_t destX, std::int64_t destY) {
        const double radians = static_cast<double>(m_drawing.Angle) * 3.14159265358979323846 / 180;
        const bool isOddQuarter = std::abs(std::fmod(m_drawing.Angle, 180.0F)) == 90.0F;
        const double half = isOddQuarter && (m_x.destSize + m_y.destSize) % 2 != 0 ? 0.5 : 0.0;
        const double dx = static_cast<double>(destX - m_x.dest) + 0.5 + half - static_cast<double>(m_x.destSize) / 2;
        const double dy = static_cast<double>(destY - m_y.dest) + 0.5 + half - static_cast<double>(m_y.destSize) / 2;
        const double corner = m_drawing.HighQuality ? 0.5 : 0.0;
        const auto position = [corner](double offset, const Axis& axis, bool isOpposite) {
            const double at =
                static_cast<double>(axis.size) / 2 - corner + (isOpposite ? -offset : offset) * axis.ratio();
            const double step = std::round(at * 256) / 256;
            return std::abs(at - step) < 1e-9 ? step : at; // sines are inexact
        };
        const double u = position(dx * std::cos(radians) + dy * std::sin(radians), m_x, m_x.isMirrored);
        const double v = position(dy * std::cos(radians) - dx * std::sin(radians), m_y, !m_y.isMirrored);
        const double least = m_drawing.HighQuality ? -1.0 : 0.0;
        if (!(u >= least && v >= least && u < static_cast<double>(m_x.size) && v < static_cast<double>(m_y.size)))
            return {};
        const auto iX = static_cast<std::int64_t>(std::floor(u));
        const auto iY = static_cast<std::int64_t>(std::floor(v));
        if (!m_drawing.HighQuality) return m_image.stored(iX, iY);
        const auto fX = static_cast<std::int64_t>((u - std::floor(u)) * 256);
        const auto fY = static_cast<std::int64_t>((v - std::floor(v)) * 256);
        return mean(iX, iY, iY + 1, 256 - fX, fX, 256 - fY, fY);
    }

    Pixel toned(Pixel pixel) const {
        const int alpha = pixel[3];
        const float light = std::abs(m_drawing.LightAdjustment) <= 100 ? m_drawing.LightAdjustment : 0.0F;
        const auto factor = static_cast<float>(static_cast<double>(light) / 100 * 255);
        const long adjust = std::lrint(alpha * static_cast<double>(factor)) / 255;
        for (std::size_t channel = 0; channel < 3; ++channel)
            pixel[channel] = static_cast<std::uint8_t>(std::clamp<long>(pixel[channel] + adjust, 0, alpha));
        if (m_drawing.grayScale == gsclNone) return pixel;
        const kernels::GrayWeights weights = iparseGrayScaleRatios(m_drawing.grayScale);
        const float weighed[] = {weights.b, weights.g, weights.r};
        double sum = 0; // exact
        for (std::size_t channel = 0; channel < 3; ++channel)
            sum += pixel[channel] * static_cast<double>(weighed[channel]);
        const auto gray = static_cast<std::uint8_t>(std::lrint(sum));
        return {gray, gray, gray, pixel[3]};
    }

    void blend(Pixel& target, const Pixel& pixel) const {
        if (pixel[3] == 0) return;
        const int percent = m_drawing.Opacity % 100 == 0 ? 100 : m_drawing.Opacity % 100;
        const int global = percent * 255 / 100;
        for (std::size_t channel = 0; channel < 4; ++channel)
            target[channel] = static_cast<std::uint8_t>(
                (target[channel] * (255 - pixel[3] * global / 255) + pixel[channel] * global) / 255);
    }

    Picture m_image;
    Drawing m_drawing;
    Axis m_x{}, m_y{};
};

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
