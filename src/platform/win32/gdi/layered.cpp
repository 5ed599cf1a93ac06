#include "platform/layered.h"
#include "platform/faults.h"
#include <windows.h>

namespace pixkit::platform {

namespace {

// Borrowed, because systems before version 5 have none and must load the component all the same.
const auto update = [] {
    return reinterpret_cast<decltype(&::UpdateLayeredWindow)>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"user32.dll"), "UpdateLayeredWindow")));
};

// Where the window is, in the coordinates in which it is moved. Of a mirrored parent these run from its right, and the
// corner is the other one: only of a whole rectangle does the system know that.
POINT positionOf(HWND window) noexcept {
    RECT rect{};
    ::GetWindowRect(window, &rect);
    if ((::GetWindowLongW(window, GWL_STYLE) & WS_CHILD) != 0)
        ::MapWindowPoints(nullptr, ::GetParent(window), reinterpret_cast<POINT*>(&rect), 2);
    return {rect.left, rect.top};
}

} // namespace

bool canShowWindows() noexcept {
    return true;
}

bool UpdateLayeredWindow(Handle window, const LayeredContent& content) noexcept {
    const auto native = reinterpret_cast<HWND>(window);
    const auto function = update();
    if (function == nullptr || ::IsWindow(native) == FALSE || faultDue(SeamCall::updateLayeredWindow)) return false;
    const LONG style = ::GetWindowLongW(native, GWL_EXSTYLE);
    if ((style & WS_EX_LAYERED) == 0) ::SetWindowLongW(native, GWL_EXSTYLE, style | WS_EX_LAYERED);
    POINT position = positionOf(native), origin{0, 0};
    position = {content.x.value_or(position.x), content.y.value_or(position.y)};
    SIZE size{content.width, content.height};
    BLENDFUNCTION blend{AC_SRC_OVER, 0, content.alpha, AC_SRC_ALPHA};
    const bool isShown = function(native, nullptr, content.x || content.y ? &position : nullptr, &size,
                                  reinterpret_cast<HDC>(content.dc), &origin, 0, &blend, ULW_ALPHA) != FALSE;
    if (!isShown && (style & WS_EX_LAYERED) == 0) ::SetWindowLongW(native, GWL_EXSTYLE, style);
    return isShown;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
