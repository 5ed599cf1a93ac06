// Products have no test doors. This object must define nothing but what the doors define too, or linking both would
// clash.
#include "platform/faults.h"

namespace pixkit::platform {

bool faultDue(SeamCall) noexcept {
    return false;
}

const OsVersion* pretendedVersion() noexcept {
    return nullptr;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
