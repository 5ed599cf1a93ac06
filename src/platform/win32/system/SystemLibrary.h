// Libraries that belong to the system.
#pragma once
#include <windows.h>

namespace pixkit::platform {

// The system's own, wherever the program's folder may have another. Systems that do not know this search look as ever.
// Null when there is none.
HMODULE loadSystemLibrary(const wchar_t* name) noexcept;

} // namespace pixkit::platform
