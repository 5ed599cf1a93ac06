// Bitmaps and device contexts for tests of the seam.
#pragma once
#include "platform/gdi.h"
#include <cstdint>
#include <vector>

namespace pixkit::test {

using UniqueBitmap = platform::UniqueHandle<&platform::DeleteObject>;
using MemoryDC = platform::UniqueHandle<&platform::DeleteObject>; // as the component frees its own
using Bytes = std::vector<std::uint8_t>;

inline platform::BitmapInfoHeader headerOf(int width, int height, int bits) {
    platform::BitmapInfoHeader header{.biWidth = width, .biHeight = height};
    header.biBitCount = static_cast<std::uint16_t>(bits);
    return header;
}

// With 8 bits, colour i is blue i + 10.
inline UniqueBitmap makeBitmap(int width, int height, int bits, std::uint8_t** pixels = nullptr) {
    platform::ColorTable colors{};
    for (std::uint32_t i = 0; i < 256; ++i)
        colors[i] = i + 10;
    void* memory = nullptr;
    const platform::BitmapInfoHeader header = headerOf(width, height, bits);
    UniqueBitmap bitmap(platform::CreateDIBSection(platform::ScreenDC().get(), header, &memory, &colors));
    if (pixels != nullptr) *pixels = static_cast<std::uint8_t*>(memory);
    return bitmap;
}

inline MemoryDC makeMemoryDC() {
    return MemoryDC(platform::CreateCompatibleDC(platform::ScreenDC().get()));
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
