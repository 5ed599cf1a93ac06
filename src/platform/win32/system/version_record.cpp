#include "platform/win32/system/version_record.h"
#include <cstring>

namespace pixkit::platform {

namespace {
// VS_VERSIONINFO: three words, the key L"VS_VERSION_INFO", padding to four bytes, then the fixed part.
constexpr std::size_t fixedPart = 40;
constexpr DWORD fixedSignature = 0xFEEF04BD;
} // namespace

std::optional<std::array<DWORD, 4>> versionRecord(HMODULE module) noexcept {
    const HRSRC resource = ::FindResourceW(module, MAKEINTRESOURCEW(VS_VERSION_INFO), MAKEINTRESOURCEW(16));
    const HGLOBAL loaded = resource != nullptr ? ::LoadResource(module, resource) : nullptr;
    const auto* const record = loaded != nullptr ? static_cast<const char*>(::LockResource(loaded)) : nullptr;
    VS_FIXEDFILEINFO info;
    if (record == nullptr || ::SizeofResource(module, resource) < fixedPart + sizeof info) return {};
    std::memcpy(&info, record + fixedPart, sizeof info);
    if (info.dwSignature != fixedSignature) return {};
    return std::array<DWORD, 4>{HIWORD(info.dwFileVersionMS), LOWORD(info.dwFileVersionMS),
                                HIWORD(info.dwFileVersionLS), LOWORD(info.dwFileVersionLS)};
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
