#include "platform/system.h"
#include "platform/faults.h"
#include <windows.h>

namespace pixkit::platform {

OsVersion GetVersionExA() noexcept {
    if (const OsVersion* const pretended = pretendedVersion()) return *pretended;
    OSVERSIONINFOEXA info{};
    auto* const plain = reinterpret_cast<OSVERSIONINFOA*>(&info);
    // Systems before NT 4 SP6 and 2000 refuse the extended record, and leave the service pack at 0.
    info.dwOSVersionInfoSize = sizeof(OSVERSIONINFOEXA);
    if (!::GetVersionExA(plain)) {
        info = {};
        info.dwOSVersionInfoSize = sizeof(OSVERSIONINFOA);
        if (!::GetVersionExA(plain)) return {};
    }
    return {info.dwPlatformId, info.dwMajorVersion, info.dwMinorVersion, info.wServicePackMajor};
}

LocalTime GetLocalTime() noexcept {
    SYSTEMTIME now{};
    ::GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

} // namespace pixkit::platform
