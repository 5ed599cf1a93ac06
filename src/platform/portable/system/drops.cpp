#include "platform/drops.h"
#include "platform/SystemDrops.h"

namespace pixkit::platform {

std::string fromNarrow(std::span<const std::uint8_t> name) {
    return {name.begin(), name.end()};
}

std::vector<DroppedFile> filesOfDrop(Handle) {
    return {};
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
