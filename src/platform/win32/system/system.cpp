#include "platform/system.h"
#include "platform/faults.h"
#include <cstddef>
#include <windows.h>

// RtlGenRandom, as advapi32 exports it.
extern "C" BOOLEAN NTAPI SystemFunction036(void* buffer, ULONG length);

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

bool RtlGenRandom(void* bytes, std::uint32_t count) noexcept {
    return !faultDue(SeamCall::genRandom) && ::SystemFunction036(bytes, count) != FALSE;
}

// The place of the lock in the process' environment block has been the same in all systems of the NT family.
bool isUnderLoaderLock() noexcept {
    constexpr std::size_t place = sizeof(void*) == 8 ? 0x110 : 0xA0;
    using GetBlock = const std::byte* WINAPI();
    auto* const getBlock = reinterpret_cast<GetBlock*>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlGetCurrentPeb")));
    const std::byte* const block = getBlock != nullptr ? getBlock() : nullptr;
    if (block == nullptr) return false;
    const auto* const lock = *static_cast<const CRITICAL_SECTION* const*>(static_cast<const void*>(block + place));
    return lock != nullptr && reinterpret_cast<ULONG_PTR>(lock->OwningThread) == ::GetCurrentThreadId();
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
