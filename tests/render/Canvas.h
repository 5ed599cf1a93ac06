// A device context to draw on, whose pixels can be seen.
#pragma once
#include "platform/gdi.h"
#include "surface/cPixSheet.h"
#include <cstddef>
#include <cstdint>

namespace pixkit::test {

class Canvas {
  public:
    Canvas(std::int32_t width, std::int32_t height, std::uint16_t bitCount) {
        platform::BitmapInfoHeader header;
        header.biWidth = width;
        header.biHeight = height;
        header.biBitCount = bitCount;
        stride = (static_cast<std::size_t>(width) * bitCount / 8 + 3) / 4 * 4;
        size = stride * static_cast<std::size_t>(height);
        const platform::ScreenDC screen;
        void* memory = nullptr;
        m_bitmap = platform::CreateDIBSection(screen.get(), header, &memory);
        bits = static_cast<std::uint8_t*>(memory);
        dc = platform::CreateCompatibleDC(screen.get());
        platform::SelectObject(dc, m_bitmap);
    }
    ~Canvas() {
        platform::DeleteDC(dc);
        platform::DeleteObject(m_bitmap);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    platform::Handle dc = 0;
    std::uint8_t* bits = nullptr; // bottom row first
    std::size_t stride = 0;
    std::size_t size = 0;

  private:
    platform::Handle m_bitmap = 0;
};

// Whether an image is in a device context: then no other takes it.
inline bool isSelected(const cPixSheet& sheet) {
    const platform::UniqueHandle<&platform::DeleteDC> probe(platform::CreateCompatibleDC(0));
    const platform::Handle before = platform::SelectObject(probe.get(), sheet.Handle());
    if (before != 0) platform::SelectObject(probe.get(), before);
    return before == 0;
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
