#include "platform/interaction.h"
#include "platform/SystemMessageBox.h"
#include "platform/faults.h"
#include "platform/win32/system/OpenBox.h"
#include "platform/win32/system/names.h"
#include <windows.h>

namespace pixkit::platform {

int systemMessageBox(const std::string& text, const std::string& caption, std::uint32_t style) {
    if (!isWindowStationVisible()) return cautiousAnswer(style); // nobody could ever close the box
    const OpenBox open(OpenBox::Beside::others);
    // Without an owner, which callers do not name, only this keeps the host's windows from being used meanwhile.
    // Handlers see the style without it.
    const int answer =
        ::MessageBoxW(nullptr, shownText(text).c_str(), shownText(caption).c_str(), style | MB_TASKMODAL);
    return answer != 0 ? answer : cautiousAnswer(style); // 0: the box could not be shown
}

bool isWindowStationVisible() noexcept {
    if (faultDue(SeamCall::windowStationVisible)) return false;
    USEROBJECTFLAGS flags{};
    return ::GetUserObjectInformationW(::GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof flags, nullptr) !=
               FALSE &&
           (flags.dwFlags & WSF_VISIBLE) != 0;
}

bool isDesktopWindowUnicode() noexcept {
    return !faultDue(SeamCall::desktopWindowUnicode) && ::IsWindowUnicode(::GetDesktopWindow()) != FALSE;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
