// Non-owning two-dimensional view of 32-bit pixels: the overlay through which every pixel loop reaches the store.
#pragma once
#include <cstddef>
#include <cstdint>

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
};

using PixelView = BasicPixelView<std::uint8_t>;
using ConstPixelView = BasicPixelView<const std::uint8_t>;

} // namespace pixkit
