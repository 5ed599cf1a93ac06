#include "platform/files.h"
#include "platform/win32/system/names.h"
#include <exception>
#include <windows.h>

namespace pixkit::platform {

std::optional<FileIdentity> identityOf(const std::string& name) noexcept {
    constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    try {
        std::wstring wide;
        if (!toUtf16(name, wide)) return {};
        const UniqueFile file(reinterpret_cast<Handle>(
            ::CreateFileW(wide.c_str(), 0, shareAll, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)));
        BY_HANDLE_FILE_INFORMATION facts{};
        if (!file || ::GetFileInformationByHandle(reinterpret_cast<HANDLE>(file.get()), &facts) == FALSE) return {};
        return FileIdentity{facts.dwVolumeSerialNumber,
                            std::uint64_t{facts.nFileIndexHigh} << 32 | facts.nFileIndexLow};
    } catch (const std::exception&) { // no memory for the name
        return {};
    }
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
