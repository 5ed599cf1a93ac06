// Layered windows, whose content is a picture with alpha that the system blends with what lies behind them.
#pragma once
#include "platform/handle.h"
#include <cstdint>
#include <optional>

namespace pixkit::platform {

// Whether there are windows: Windows has them, and from version 5 on layered ones; the portable side has none.
bool canShowWindows() noexcept;

struct LayeredContent {
    Handle dc = 0; // a memory device context with a bitmap of premultiplied pixels of 32 bits
    std::int32_t width = 0, height = 0;
    std::uint8_t alpha = 255;         // by which all of it is multiplied
    std::optional<std::int32_t> x, y; // of the window's top left corner: on the screen, of a child in its parent
};
// Makes that the content of a window, its size the window's, and the window a layered one where it was none. Without
// x or y it stays where it is. False, and the window as it was, for what is no window, one that is layered in the other
// way (SetLayeredWindowAttributes), and where the system refuses.
bool UpdateLayeredWindow(Handle window, const LayeredContent& content) noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
