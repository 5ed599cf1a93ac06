#include "codecs/ico/IcoScale.h"
#include "kernels/kernels.h"
#include <algorithm>

namespace pixkit {

namespace {

// Which source pixels make a pixel along one axis, and how much each counts. All weights are whole numbers, so that
// nothing is rounded before the end.
struct Axis {
    struct Taps {
        std::size_t first, count; // source pixels
        std::size_t weights;      // where theirs begin
    };
    std::vector<Taps> taps;
    std::vector<std::uint32_t> weights;
    std::uint64_t total; // of the weights of each pixel
};

// Lengths are counted in parts of which a source pixel has `to` and a result `from`.
Axis averagingAxis(std::size_t from, std::size_t to) {
    Axis axis{{}, {}, from};
    for (std::size_t i = 0; i < to; ++i) {
        const std::size_t begin = i * from, end = begin + from;
        const std::size_t first = begin / to, last = (end - 1) / to;
        axis.taps.push_back({first, last - first + 1, axis.weights.size()});
        for (std::size_t k = first; k <= last; ++k)
            axis.weights.push_back(static_cast<std::uint32_t>(std::min(end, (k + 1) * to) - std::max(begin, k * to)));
    }
    return axis;
}

// Between the centres of two pixels lie 2 * to parts. Before the first centre and behind the last one nothing changes.
Axis interpolatingAxis(std::size_t from, std::size_t to) {
    Axis axis{{}, {}, 2 * to};
    for (std::size_t i = 0; i < to; ++i) {
        const std::size_t centre = std::clamp((2 * i + 1) * from, to, (2 * from - 1) * to) - to;
        const std::size_t first = centre / (2 * to);
        const auto far = static_cast<std::uint32_t>(centre % (2 * to));
        axis.taps.push_back({first, far > 0 ? 2U : 1U, axis.weights.size()});
        axis.weights.push_back(static_cast<std::uint32_t>(axis.total) - far);
        if (far > 0) axis.weights.push_back(far);
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
        const std::uint32_t* weight = &axis.weights[taps.weights];
        std::uint64_t b = 0, g = 0, r = 0, a = 0;
        for (std::size_t k = 0; k < taps.count; ++k, pixel += 4) {
            const std::uint64_t w = weight[k];
            b += w * pixel[0];
            g += w * pixel[1];
            r += w * pixel[2];
            a += w * pixel[3];
        }
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
            const std::uint64_t weight = along.weights[taps.weights + k];
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
    const auto proportional = [](std::size_t side, std::size_t numerator, std::size_t denominator) {
        return std::max<std::size_t>(1, (side * numerator + denominator / 2) / denominator);
    };
    if (source.width * height > source.height * width) {
        place.height = proportional(width, source.height, source.width);
    } else {
        place.width = proportional(height, source.width, source.height);
    }
    place.left = (width - place.width) / 2;
    place.top = (height - place.height) / 2;
    return place;
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
