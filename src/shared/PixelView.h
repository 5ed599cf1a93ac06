// Non-owning two-dimensional view of 32-bit pixels: the overlay through which every pixel loop reaches the store.
#pragma once
#include "shared/Rect.h"
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace pixkit {

// `height` rows of `width` pixels, four bytes B, G, R, A each; row 0 is the first in memory, which for the pixel
// store is the bottom row of the picture. Rows are `stride` bytes apart. A view of nothing has a null `bits`.
template <class Byte>
struct BasicPixelView {
    Byte* bits = nullptr;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t stride = 0;

    explicit operator bool() const noexcept { return bits != nullptr; }
    Byte* row(std::size_t memoryRow) const noexcept { return bits + memoryRow * stride; }
    // Rows counted from the top of the picture in a bottom-up store.
    Byte* rowFromTop(std::size_t y) const noexcept { return row(height - 1 - y); }
    operator BasicPixelView<const Byte>() const noexcept { return {bits, width, height, stride}; }

    // All of it.
    Rect rect() const noexcept {
        return Rect::ofSize(static_cast<std::int64_t>(width), static_cast<std::int64_t>(height));
    }
    // A rectangle that lies within.
    BasicPixelView part(const Rect& rect) const noexcept {
        const std::size_t lowest = height - static_cast<std::size_t>(rect.bottom);
        return {row(lowest) + 4 * rect.left, static_cast<std::size_t>(rect.width()),
                static_cast<std::size_t>(rect.height()), stride};
    }
    // The memory from the first pixel to the last, with what lies between the rows of a part.
    std::span<const std::uint8_t> bytes() const noexcept {
        return {bits, height == 0 ? 0 : (height - 1) * stride + width * 4};
    }
};

using PixelView = BasicPixelView<std::uint8_t>;
using ConstPixelView = BasicPixelView<const std::uint8_t>;

// Whether two pieces of memory have a byte in common: what is read there changes while the other is written.
inline bool overlap(std::span<const std::uint8_t> a, std::span<const std::uint8_t> b) noexcept {
    const std::less<const std::uint8_t*> before;
    return !a.empty() && !b.empty() && before(a.data(), b.data() + b.size()) && before(b.data(), a.data() + a.size());
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
