#include "cli/Scaling.h"
#include <algorithm>
#include <cmath>

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

} // namespace pixkit::cli
