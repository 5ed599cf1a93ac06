#include "platform/system.h"
#include "platform/faults.h"
#include <ctime>
#include <sys/random.h>

namespace pixkit::platform {

OsVersion GetVersionExA() noexcept {
    if (const OsVersion* const pretended = pretendedVersion()) return *pretended;
    return {.dwPlatformId = 2, .dwMajorVersion = 4, .wServicePackMajor = 6};
}

LocalTime GetLocalTime() noexcept {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    if (localtime_r(&now, &parts) == nullptr) return {};
    const auto field = [](int value) { return static_cast<std::uint16_t>(value); };
    return {field(parts.tm_year + 1900), field(parts.tm_mon + 1), field(parts.tm_mday),
            field(parts.tm_hour),        field(parts.tm_min),     field(parts.tm_sec)};
}

bool RtlGenRandom(void* bytes, std::uint32_t count) noexcept {
    if (faultDue(SeamCall::genRandom)) return false;
    return getrandom(bytes, count, 0) == static_cast<ssize_t>(count);
}

bool isUnderLoaderLock() noexcept {
    return false;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
