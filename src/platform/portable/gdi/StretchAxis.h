// One axis of a rectangle that is stretched from `source` pixels and cut at the target's edges.
#pragma once
#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace pixkit::platform {

struct StretchAxis {
    StretchAxis(std::int32_t position, std::int32_t size, std::size_t sourceSize, std::size_t targetSize) noexcept
        : start(position), length(size), source(sourceSize), first(std::max<std::int64_t>(start, 0)),
          last(std::min<std::int64_t>(start + length, static_cast<std::int64_t>(targetSize))) {}
    // Which pixel of the source the target's pixel shows.
    std::size_t sourceOf(std::int64_t target) const noexcept {
        return static_cast<std::size_t>(static_cast<std::uint64_t>(target - start) * source /
                                        static_cast<std::uint64_t>(length));
    }
    std::size_t visible() const noexcept { return last > first ? static_cast<std::size_t>(last - first) : 0; }

    std::int64_t start, length;
    std::size_t source;
    std::int64_t first, last; // in the target
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
