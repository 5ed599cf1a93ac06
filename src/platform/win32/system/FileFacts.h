// What the system says of a file that is there.
#pragma once
#include "platform/files.h"
#include <optional>
#include <windows.h>

namespace pixkit::platform {

// Nothing where no file of that name is there, or its system does not say. It need not be readable.
inline std::optional<BY_HANDLE_FILE_INFORMATION> factsOfFile(const wchar_t* name) noexcept {
    constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const UniqueFile file(reinterpret_cast<Handle>(
        ::CreateFileW(name, 0, shareAll, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr)));
    BY_HANDLE_FILE_INFORMATION facts{};
    if (!file || ::GetFileInformationByHandle(reinterpret_cast<HANDLE>(file.get()), &facts) == FALSE) return {};
    return facts;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
