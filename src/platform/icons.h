// Icons and cursors as the system holds them, under the names of the Windows API. As with gdi.h, a handle that is zero,
// stale or of another kind makes a call fail; to GetObjectType an icon is nothing.
#pragma once
#include "platform/api.h"
#include "platform/handle.h"
#include <cstdint>

namespace pixkit::platform {

// ICONINFO. The mask has 1 bit a pixel: where it is set, the screen shows through. Without colours it is twice as high
// as the icon, and its lower half is what the screen is XORed with.
struct IconInfo {
    bool fIcon = true;          // false: a cursor
    std::uint32_t xHotspot = 0; // from the top left; of an icon its middle
    std::uint32_t yHotspot = 0;
    Handle hbmMask = 0;
    Handle hbmColor = 0; // 0 in a monochrome icon
};

// Copies of an icon's bitmaps, which the caller frees with DeleteObject. False, and `info` as it was, on failure.
PIXKIT_API bool GetIconInfo(Handle icon, IconInfo& info) noexcept;

// An icon of copies of the bitmaps, which must have a mask; 0 on failure.
PIXKIT_API Handle CreateIconIndirect(const IconInfo& info) noexcept;
PIXKIT_API bool DestroyIcon(Handle icon) noexcept;
using UniqueIcon = UniqueHandle<DestroyIcon>;

// A bitmap of 1 bit a pixel, black and white. `bits` are its rows, the top one first, each padded to two bytes. 0 on
// failure.
PIXKIT_API Handle CreateMonochromeBitmap(std::int32_t width, std::int32_t height, const std::uint8_t* bits) noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
