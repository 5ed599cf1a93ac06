// Resampling against convolution in double precision, which it may differ from by 1 where it rounds.
#include "shared/Resampling.h"
#include "Ledger.h"
#include "PixelRows.h"
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

using namespace pixkit;
using namespace pixkit::test;

namespace {

double sinc(double x) {
    return x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

double filterAt(eResampleFilters filter, double x) {
    x = std::abs(x);
    if (filter == resampleTriangle) return std::max(0.0, 1 - x);
    if (filter == resampleLanczos3) return x < 3 ? sinc(x) * sinc(x / 3) : 0;
    if (x < 1) return 7.0 / 6 * x * x * x - 2 * x * x + 8.0 / 9;
    return x < 2 ? -7.0 / 18 * x * x * x + 2 * x * x - 10.0 / 3 * x + 16.0 / 9 : 0;
}

// For each pixel of an axis the weights of all of the source's.
std::vector<std::vector<double>> exactWeights(std::size_t from, std::size_t to, eResampleFilters filter) {
    if (filter == resampleAuto) filter = to < from ? resampleLanczos3 : resampleMitchell;
    std::vector<std::vector<double>> all(to, std::vector<double>(from));
    const double ratio = static_cast<double>(from) / static_cast<double>(to);
    for (std::size_t i = 0; i < to; ++i) {
        const double begin = static_cast<double>(i) * ratio;
        double sum = 0;
        for (std::size_t j = 0; j < from; ++j) {
            const auto pixel = static_cast<double>(j);
            double& weight = all[i][j];
            weight = from == to ? (i == j ? 1 : 0)
                     : filter == resampleArea
                         ? std::max(0.0, std::min(pixel + 1, begin + ratio) - std::max(pixel, begin))
                         : filterAt(filter, (pixel + 0.5 - begin - ratio / 2) / std::max(ratio, 1.0));
            sum += weight;
        }
        for (double& weight : all[i])
            weight /= sum;
    }
    return all;
}

struct Picture {
    Picture(std::size_t width, std::size_t height)
        : pixels(width * height * 4), view{&pixels[0], width, height, width * 4} {}
    std::vector<std::uint8_t> pixels;
    PixelView view;
};

// Valid pixels of every alpha, or the steepest changes that there are.
Picture drawn(std::size_t width, std::size_t height, bool isSteep, Numbers& numbers) {
    Picture picture(width, height);
    putValidPixels(picture.pixels, numbers);
    for (std::size_t i = 0; isSteep && i < picture.pixels.size(); ++i)
        picture.pixels[i] = ((i / 4) % width + i / 4 / width) % 2 == 0 ? 255 : 0;
    return picture;
}

void expectExact(const Picture& source, const Picture& target, eResampleFilters filter) {
    const auto across = exactWeights(source.view.width, target.view.width, filter);
    const auto along = exactWeights(source.view.height, target.view.height, filter);
    double worst = 0;
    for (std::size_t y = 0; y < target.view.height; ++y) {
        for (std::size_t x = 0; x < target.view.width; ++x) {
            double sums[4] = {};
            for (std::size_t j = 0; j < source.view.height; ++j) {
                for (std::size_t i = 0; along[y][j] != 0 && i < source.view.width; ++i) {
                    const double weight = along[y][j] * across[x][i];
                    for (std::size_t channel = 0; weight != 0 && channel < 4; ++channel)
                        sums[channel] += weight * source.view.row(j)[4 * i + channel];
                }
            }
            const double alpha = std::clamp(sums[3], 0.0, 255.0);
            const std::uint8_t* const pixel = target.view.row(y) + 4 * x;
            for (std::size_t channel = 0; channel < 4; ++channel) {
                worst = std::max(worst, std::abs(std::clamp(sums[channel], 0.0, alpha) - pixel[channel]));
                ASSERT_LE(pixel[channel], pixel[3]);
            }
        }
    }
    EXPECT_LT(worst, 0.6) << "half of it is the last rounding";
}

} // namespace

TEST(Resampling, DiffersFromTheConvolutionOrBetweenBuilds) {
    constexpr std::size_t sizes[][4] = {{1, 1, 5, 7},     {1, 37, 3, 11},    {53, 1, 7, 4},    {33, 29, 10, 9},
                                        {33, 29, 71, 83}, {100, 90, 37, 3},  {3, 3, 2, 2},     {300, 280, 3, 5},
                                        {61, 47, 61, 20}, {61, 47, 90, 47},  {9, 9, 4, 200},   {1000, 1, 2, 1},
                                        {90, 200, 1, 1},  {7, 900, 9, 2},    {6, 6, 6, 6},     {40000, 2, 1, 1},
                                        {3, 40000, 2, 1}, {300000, 1, 3, 1}, {1, 300000, 1, 3}};
    std::vector<std::uint8_t> all;
    Numbers numbers(7);
    for (const auto filter : {resampleAuto, resampleArea, resampleTriangle, resampleMitchell, resampleLanczos3}) {
        for (const auto& [fromWidth, fromHeight, width, height] : sizes) {
            for (const bool isSteep : {false, true}) {
                SCOPED_TRACE(std::to_string(fromWidth) + "x" + std::to_string(fromHeight) + " to " +
                             std::to_string(width) + "x" + std::to_string(height) + ", filter " +
                             std::to_string(filter) + (isSteep ? ", steep" : ""));
                const Picture source = drawn(fromWidth, fromHeight, isSteep, numbers);
                Picture target(width, height);
                resample(target.view, source.view, {.across = filter, .along = filter});
                ASSERT_NO_FATAL_FAILURE(expectExact(source, target, filter));
                all.insert(all.end(), target.pixels.begin(), target.pixels.end());
            }
        }
    }
    EXPECT_EQ(checksum(all), "ecff462401547d8f");
}

// Wide enough for several pieces.
TEST(Resampling, ChangesFlatPicturesOrDarkensTheirEdges) {
    for (const auto filter : {resampleArea, resampleTriangle, resampleMitchell, resampleLanczos3}) {
        for (const std::uint8_t value : std::initializer_list<std::uint8_t>{1, 127, 255}) {
            Picture source(9000, 70), target(3001, 17);
            std::ranges::fill(source.pixels, value);
            resample(target.view, source.view, {.across = filter, .along = filter, .mirrorsColumns = true});
            EXPECT_EQ(std::ranges::count(target.pixels, value), std::ssize(target.pixels)) << filter;
        }
    }
}
// SPDX-License-Identifier: MIT
