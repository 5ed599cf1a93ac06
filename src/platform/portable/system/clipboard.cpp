#include "platform/SystemClipboard.h"

namespace pixkit::platform {

ClipboardProvider systemClipboard() {
    return {};
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
