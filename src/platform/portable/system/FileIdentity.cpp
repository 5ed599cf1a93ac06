#include "platform/files.h"
#include <sys/stat.h>

namespace pixkit::platform {

std::optional<FileIdentity> identityOf(const std::string& name) {
    struct stat found {};
    if (stat(name.c_str(), &found) != 0) return {};
    return FileIdentity{static_cast<std::uint64_t>(found.st_dev), static_cast<std::uint64_t>(found.st_ino)};
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
