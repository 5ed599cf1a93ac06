// Where borrowed libraries may come from: folders that only those who installed something write to.
#pragma once
#include <cstdint>
// windows.h needs to come last: its macros must not reach the headers above.
#include <windows.h>

namespace pixkit::platform {

enum class LibraryFolder : std::uint8_t {
    component, // of the module that this function is linked into
    program,
    system,
};

// The library of this name in that folder, by its full name, so that it is this one or none: the loader's own search
// would end in the current folder and in those of the path. Null when there is none.
HMODULE loadFrom(LibraryFolder folder, const wchar_t* name) noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
