// Libraries that belong to the system.
#pragma once
#include <windows.h>

namespace pixkit::platform {

// The system's own, wherever the program's folder may have another. Systems that do not know this search have it in the
// side-by-side store or among their own, or it was installed with the program (Borrowing.h). Null when there is none.
HMODULE loadSystemLibrary(const wchar_t* name) noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
