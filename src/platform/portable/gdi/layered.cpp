#include "platform/layered.h"

namespace pixkit::platform {

bool canShowWindows() noexcept {
    return false;
}

bool UpdateLayeredWindow(Handle, const LayeredContent&) noexcept {
    return false;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
