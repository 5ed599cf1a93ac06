#include "platform/faults.h"
#include "platform/portable/HandleTable.h"

namespace pixkit::platform {

std::size_t openHandles() noexcept {
    return openHandleCount;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
