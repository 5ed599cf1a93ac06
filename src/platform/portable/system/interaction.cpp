#include "platform/interaction.h"
#include "platform/SystemMessageBox.h"
#include "platform/faults.h"

namespace pixkit::platform {

int systemMessageBox(const std::string&, const std::string&, std::uint32_t style) {
    return cautiousAnswer(style);
}

bool isWindowStationVisible() noexcept {
    return false;
}

bool isDesktopWindowUnicode() noexcept {
    return !faultDue(SeamCall::desktopWindowUnicode);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
