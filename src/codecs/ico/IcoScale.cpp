#include "codecs/ico/IcoScale.h"
#include "shared/Resampling.h"
#include <algorithm>

namespace pixkit {

IcoPlacement icoPlacement(ConstPixelView source, std::size_t width, std::size_t height) noexcept {
    IcoPlacement place{0, 0, width, height};
    const auto proportional = [](std::uint64_t side, std::uint64_t numerator, std::uint64_t denominator) {
        return static_cast<std::size_t>(std::max<std::uint64_t>(1, (side * numerator + denominator / 2) / denominator));
    };
    if (std::uint64_t{source.width} * height > std::uint64_t{source.height} * width) {
        place.height = proportional(width, source.height, source.width);
    } else {
        place.width = proportional(height, source.width, source.height);
    }
    place.left = (width - place.width) / 2;
    place.top = (height - place.height) / 2;
    return place;
}

CursorHotspot icoHotspot(ConstPixelView source, CursorHotspot point, std::size_t width, std::size_t height) noexcept {
    const IcoPlacement place = icoPlacement(source, width, height);
    const auto scaled = [](std::int32_t at, std::size_t from, std::size_t to, std::size_t offset) {
        const std::int64_t there = std::int64_t{at} * static_cast<std::int64_t>(to) / static_cast<std::int64_t>(from);
        return static_cast<std::int32_t>(
            std::clamp<std::int64_t>(there + static_cast<std::int64_t>(offset), 0, largestIcon));
    };
    return {scaled(point.x, source.width, place.width, place.left),
            scaled(point.y, source.height, place.height, place.top)};
}

std::vector<std::uint8_t> icoScale(ConstPixelView source, bool hasAlpha, std::size_t width, std::size_t height) {
    std::vector<std::uint8_t> pixels(width * height * 4);
    const IcoPlacement place = icoPlacement(source, width, height);
    const std::size_t below = height - place.top - place.height;
    const PixelView target{&pixels[(below * width + place.left) * 4], place.width, place.height, width * 4};
    const auto filter = [](std::size_t from, std::size_t to) { return to < from ? resampleArea : resampleTriangle; };
    resample(target, source,
             {.across = filter(source.width, place.width),
              .along = filter(source.height, place.height),
              .isOpaque = !hasAlpha});
    return pixels;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
