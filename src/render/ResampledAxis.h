// The columns or rows of a picture that is brought to another size.
#pragma once
#include <algorithm>
#include <cstddef>

namespace pixkit {

// One axis of a picture that is scaled: `sourceSize` pixels from `sourceStart`, columns or stored rows, become
// `scaledSize`, of which `count` from `start` are computed.
struct ResampledAxis {
    std::size_t sourceStart, sourceSize, scaledSize, start, count;

    double ratio() const { return static_cast<double>(sourceSize) / static_cast<double>(scaledSize); }
    std::size_t last() const { return sourceStart + sourceSize - 1; }
    // The pixel that a position falls on. A position close below the end may have been rounded up to it.
    std::size_t pixelAt(double position) const { return std::min(static_cast<std::size_t>(position), last()); }
    double scaled(std::size_t i) const { return static_cast<double>(start + i) * ratio(); }
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
