#include "platform/reporting.h"
#include "platform/libraries.h"
#include "platform/win32/system/names.h"
#include "platform/win32/system/version_record.h"
#include <new>
#include <span>
#include <windows.h>

namespace pixkit::platform {

void OutputDebugStringW(const std::string& text) noexcept {
    try {
        ::OutputDebugStringW(shownText(text).c_str());
    } catch (const std::bad_alloc&) {
        ::OutputDebugStringA(text.c_str());
    }
}

namespace {

std::string joined(std::span<const DWORD> numbers) {
    std::string text;
    for (const DWORD number : numbers) {
        if (!text.empty()) text += '.';
        text += std::to_string(number);
    }
    return text;
}

// GetVersionEx tells programs without a manifest of an older system than there is.
std::string systemVersion() {
    OSVERSIONINFOW info{};
    info.dwOSVersionInfoSize = sizeof info;
    using Ask = LONG WINAPI(OSVERSIONINFOW*);
    auto* const ask = reinterpret_cast<Ask*>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
    if (ask != nullptr) ask(&info);
    const DWORD numbers[] = {info.dwMajorVersion, info.dwMinorVersion, info.dwBuildNumber};
    return joined(numbers);
}

// A library that is loaded already, held: another thread may be about to let go of it. None before Windows XP, which
// cannot hold it without loading it.
UniqueLibrary loadedLibrary(const char* name) noexcept {
    using Get = BOOL WINAPI(DWORD, const char*, HMODULE*);
    auto* const get = reinterpret_cast<Get*>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32.dll"), "GetModuleHandleExA")));
    HMODULE module = nullptr;
    if (get == nullptr || get(0, name, &module) == FALSE) return {};
    return UniqueLibrary(reinterpret_cast<Handle>(module));
}

} // namespace

std::vector<NamedVersion> versionsInUse() {
    std::vector<NamedVersion> result = {{"Windows", systemVersion()}};
    for (const char* const name : {"zlib1.dll", "zlib.dll", "gdiplus.dll"}) {
        const UniqueLibrary library = loadedLibrary(name);
        if (!library) continue;
        const auto record = versionRecord(reinterpret_cast<HMODULE>(library.get()));
        result.push_back({name, record ? joined(*record) : "of no known version"});
    }
    return result;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
