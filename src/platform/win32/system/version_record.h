// The version record of a module, as its resources hold it.
#pragma once
#include <array>
#include <optional>
#include <windows.h>

namespace pixkit::platform {

// Its four numbers: major, minor, build and revision. Nothing when the module has no version record.
std::optional<std::array<DWORD, 4>> versionRecord(HMODULE module) noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
