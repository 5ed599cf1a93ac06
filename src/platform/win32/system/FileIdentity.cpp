#include "platform/files.h"
#include "platform/win32/system/FileFacts.h"
#include "platform/win32/system/names.h"

namespace pixkit::platform {

std::optional<FileIdentity> identityOf(const std::string& name) {
    std::wstring wide;
    if (!toUtf16(name, wide)) return {};
    const auto facts = factsOfFile(wide.c_str());
    if (!facts) return {};
    return FileIdentity{facts->dwVolumeSerialNumber, std::uint64_t{facts->nFileIndexHigh} << 32 | facts->nFileIndexLow};
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
