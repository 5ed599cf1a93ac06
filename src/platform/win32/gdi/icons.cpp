#include "platform/icons.h"
#include "platform/faults.h"
#include <windows.h>

namespace pixkit::platform {

bool GetIconInfo(Handle icon, IconInfo& info) noexcept {
    ICONINFO native{};
    if (icon == 0 || faultDue(SeamCall::getIconInfo)) return false;
    if (::GetIconInfo(reinterpret_cast<HICON>(icon), &native) == FALSE) return false;
    info = {native.fIcon != FALSE, native.xHotspot, native.yHotspot, reinterpret_cast<Handle>(native.hbmMask),
            reinterpret_cast<Handle>(native.hbmColor)};
    return true;
}

Handle CreateIconIndirect(const IconInfo& info) noexcept {
    if (faultDue(SeamCall::createIconIndirect)) return 0;
    ICONINFO native{info.fIcon ? TRUE : FALSE, info.xHotspot, info.yHotspot, reinterpret_cast<HBITMAP>(info.hbmMask),
                    reinterpret_cast<HBITMAP>(info.hbmColor)};
    return reinterpret_cast<Handle>(::CreateIconIndirect(&native));
}

bool DestroyIcon(Handle icon) noexcept {
    return icon != 0 && ::DestroyIcon(reinterpret_cast<HICON>(icon)) != FALSE;
}

Handle CreateMonochromeBitmap(std::int32_t width, std::int32_t height, const std::uint8_t* bits) noexcept {
    if (width <= 0 || height <= 0 || faultDue(SeamCall::createMonochromeBitmap)) return 0;
    return reinterpret_cast<Handle>(::CreateBitmap(width, height, 1, 1, bits));
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
