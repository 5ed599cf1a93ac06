// The one rectangle of everything above the seam.
#pragma once
#include <algorithm>
#include <cstdint>

namespace pixkit {

// Columns left .. right - 1 and rows top .. bottom - 1, rows counted downwards from the top of a picture. 64 bits hold
// the edges of every rectangle that 32-bit arguments describe.
struct Rect {
    std::int64_t left = 0, top = 0, right = 0, bottom = 0;

    static Rect ofSize(std::int64_t width, std::int64_t height) noexcept { return {0, 0, width, height}; }
    std::int64_t width() const noexcept { return right - left; }
    std::int64_t height() const noexcept { return bottom - top; }
    bool isEmpty() const noexcept { return right <= left || bottom <= top; }
    // What lies in both.
    Rect cut(const Rect& other) const noexcept {
        return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
                std::min(bottom, other.bottom)};
    }
    Rect moved(std::int64_t x, std::int64_t y) const noexcept { return {left + x, top + y, right + x, bottom + y}; }
    bool operator==(const Rect&) const = default;
};

} // namespace pixkit
// SPDX-License-Identifier: MIT
