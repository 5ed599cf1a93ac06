#include "com/version_record.h"
#include <cstring>

namespace pixkit::com {

namespace {
// VS_VERSIONINFO: three words, the key L"VS_VERSION_INFO", padding to four bytes, then the fixed part.
constexpr std::size_t fixedPart = 40;
constexpr DWORD fixedSignature = 0xFEEF04BD;
} // namespace

std::string versionText(HMODULE module) {
    const HRSRC resource = ::FindResourceW(module, MAKEINTRESOURCEW(VS_VERSION_INFO), MAKEINTRESOURCEW(16));
    const HGLOBAL loaded = resource != nullptr ? ::LoadResource(module, resource) : nullptr;
    const auto* const record = loaded != nullptr ? static_cast<const char*>(::LockResource(loaded)) : nullptr;
    VS_FIXEDFILEINFO info;
    if (record == nullptr || ::SizeofResource(module, resource) < fixedPart + sizeof info) return {};
    std::memcpy(&info, record + fixedPart, sizeof info);
    if (info.dwSignature != fixedSignature) return {};
    // Four numbers: major, minor, build (not used here) and revision.
    return std::to_string(HIWORD(info.dwFileVersionMS)) + "." + std::to_string(LOWORD(info.dwFileVersionMS)) + "." +
           std::to_string(LOWORD(info.dwFileVersionLS));
}

} // namespace pixkit::com
