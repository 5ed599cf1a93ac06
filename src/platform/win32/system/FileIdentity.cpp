#include "platform/files.h"
#include "platform/win32/system/FileFacts.h"
#include "platform/win32/system/names.h"
#include <exception>

namespace pixkit::platform {

std::optional<FileIdentity> identityOf(const std::string& name) noexcept {
    try {
        std::wstring wide;
        if (!toUtf16(name, wide)) return {};
        const auto facts = factsOfFile(wide.c_str());
        if (!facts) return {};
        return FileIdentity{facts->dwVolumeSerialNumber,
                            std::uint64_t{facts->nFileIndexHigh} << 32 | facts->nFileIndexLow};
    } catch (const std::exception&) { // no memory for the name
        return {};
    }
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
