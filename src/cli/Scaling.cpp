#include "cli/Scaling.h"
#include <algorithm>
#include <cmath>
#include <numbers>

namespace pixkit::cli {

namespace {

std::int32_t toLength(double pixels) {
    return static_cast<std::int32_t>(std::clamp(std::round(pixels), 1.0, 2147483647.0));
}

} // namespace

std::int32_t percentOf(std::int32_t length, double percent) {
    return toLength(length * percent / 100);
}

bool Scaling::dependsOnCanvas() const {
    return mode != Mode::asItIs && mode != Mode::byFactor && (width.isPercent || height.isPercent);
}

PictureSize Scaling::sizeFor(PictureSize picture, PictureSize canvas) const {
    if (mode == Mode::asItIs) return picture;
    if (mode == Mode::byFactor) {
        return {percentOf(picture.width, percent), percentOf(picture.height, percent)};
    }
    const auto pixels = [](const Side& side, std::int32_t ofCanvas) {
        return side.isPercent ? percentOf(ofCanvas, side.length) : static_cast<std::int32_t>(side.length);
    };
    const std::int32_t boxWidth = pixels(width, canvas.width);
    const std::int32_t boxHeight = pixels(height, canvas.height);
    if (mode == Mode::stretch) {
        return {boxWidth != 0 ? boxWidth : picture.width, boxHeight != 0 ? boxHeight : picture.height};
    }
    if (mode == Mode::down && (boxWidth == 0 || boxWidth >= picture.width) &&
        (boxHeight == 0 || boxHeight >= picture.height)) {
        return picture;
    }
    // The side that decides gets exactly the box's, so that no row of the canvas stays bare; the other is rounded.
    const std::int64_t byWidth = std::int64_t{boxWidth} * picture.height;
    const std::int64_t byHeight = std::int64_t{boxHeight} * picture.width;
    const bool widthDecides = boxHeight == 0 || (boxWidth != 0 && (byWidth < byHeight) != (mode == Mode::fill));
    if (widthDecides) return {boxWidth, toLength(static_cast<double>(byWidth) / picture.width)};
    return {toLength(static_cast<double>(byHeight) / picture.height), boxHeight};
}

PictureSize turnedSize(PictureSize picture, double degrees) {
    if (std::fmod(degrees, 180) == 0) return picture;
    if (std::fmod(degrees, 90) == 0) return {picture.height, picture.width};
    const double radians = degrees * std::numbers::pi / 180;
    const double cosine = std::abs(std::cos(radians));
    const double sine = std::abs(std::sin(radians));
    const auto around = [](double extent, std::int32_t size) {
        const double least = std::ceil(std::min(extent, 2147483000.0) - 1e-6);
        const auto whole = static_cast<std::int32_t>(least);
        return whole + (whole - size) % 2 * (whole > size ? 1 : -1);
    };
    return {around(picture.width * cosine + picture.height * sine, picture.width),
            around(picture.width * sine + picture.height * cosine, picture.height)};
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
