// Whether there is somebody to ask, or to tell something.
#pragma once
#include "platform/interaction.h"
#include "surface/cPixSheet.h"

namespace pixkit {

// False where the instance or the process is unattended. Then nothing is shown, and questions count as answered No.
inline bool isAttended(const cPixSheet& sheet) noexcept {
    return !sheet.Unattended() && platform::isSomebodyThere();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
