#include "codecs/ico/IcoScale.h"
#include "kernels/kernels.h"
#include <algorithm>

namespace pixkit {

namespace {

// Which source pixels make a pixel along one axis, and how much each counts. All weights are whole numbers, so that
// nothing is rounded before the end. Lengths are counted in parts, of which there are more than 32 bits hold.
struct Axis {
    struct Taps {
        std::size_t first, count;      // source pixels
        std::uint32_t weight, farther; // of the first and, where there are several, of the last
    };
    std::vector<Taps> taps;
    std::uint32_t inner; // the weight of those between the first and the last
    std::uint64_t total; // of the weights of each pixel
};

// A source pixel has `to` parts and a result `from`.
Axis averagingAxis(std::uint64_t from, std::uint64_t to) {
    Axis axis{{}, static_cast<std::uint32_t>(to), from};
    for (std::uint64_t i = 0; i < to; ++i) {
        const std::uint64_t begin = i * from, end = begin + from;
        const std::uint64_t first = begin / to, last = (end - 1) / to;
        axis.taps.push_back({static_cast<std::size_t>(first), static_cast<std::size_t>(last - first + 1),
                             static_cast<std::uint32_t>(std::min(end, (first + 1) * to) - begin),
                             static_cast<std::uint32_t>(end - last * to)});
    }
    return axis;
}

// Between the centres of two pixels lie 2 * to parts. Before the first centre and behind the last one nothing changes.
Axis interpolatingAxis(std::uint64_t from, std::uint64_t to) {
    Axis axis{{}, 0, 2 * to};
    for (std::uint64_t i = 0; i < to; ++i) {
        const std::uint64_t centre = std::clamp((2 * i + 1) * from, to, (2 * from - 1) * to) - to;
        const auto far = static_cast<std::uint32_t>(centre % (2 * to));
        axis.taps.push_back({static_cast<std::size_t>(centre / (2 * to)), far > 0 ? 2U : 1U,
                             static_cast<std::uint32_t>(axis.total) - far, far});
    }
    return axis;
}

Axis axisFor(std::size_t from, std::size_t to) {
    return to <= from ? averagingAxis(from, to) : interpolatingAxis(from, to);
}

// Four sums a pixel.
void sumAlongRow(std::vector<std::uint64_t>& sums, const std::uint8_t* row, const Axis& axis) {
    std::uint64_t* sum = sums.data();
    for (const Axis::Taps& taps : axis.taps) {
        const std::uint8_t* pixel = row + taps.first * 4;
        std::uint64_t b = 0, g = 0, r = 0, a = 0;
        const auto add = [&](std::uint64_t weight) {
            b += weight * pixel[0];
            g += weight * pixel[1];
            r += weight * pixel[2];
            a += weight * pixel[3];
            pixel += 4;
        };
        add(taps.weight);
        for (std::size_t k = 2; k < taps.count; ++k)
            add(axis.inner);
        if (taps.count > 1) add(taps.farther);
        *sum++ = b;
        *sum++ = g;
        *sum++ = r;
        *sum++ = a;
    }
}

// Into `target`, whose size is the new one.
void scale(PixelView target, ConstPixelView source) {
    const Axis across = axisFor(source.width, target.width);
    const Axis along = axisFor(source.height, target.height);
    const std::uint64_t total = across.total * along.total;
    std::vector<std::uint64_t> row(target.width * 4), sums(row.size());
    std::size_t rowInside = source.height; // whose sums `row` holds; none yet
    for (std::size_t y = 0; y < target.height; ++y) {
        const Axis::Taps& taps = along.taps[y];
        std::ranges::fill(sums, total / 2);
        for (std::size_t k = 0; k < taps.count; ++k) {
            if (rowInside != taps.first + k) {
                rowInside = taps.first + k;
                sumAlongRow(row, source.row(rowInside), across);
            }
            const std::uint64_t weight = k == 0 ? taps.weight : k + 1 < taps.count ? along.inner : taps.farther;
            for (std::size_t i = 0; i < sums.size(); ++i)
                sums[i] += weight * row[i];
        }
        std::uint8_t* const out = target.row(y);
        for (std::size_t i = 0; i < sums.size(); ++i)
            out[i] = static_cast<std::uint8_t>(sums[i] / total);
    }
}

} // namespace

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
    scale(target, source);
    if (!hasAlpha) {
        for (std::size_t y = 0; y < target.height; ++y)
            kernels::table().setOpaque(target.row(y), target.width);
    }
    return pixels;
}

} // namespace pixkit
