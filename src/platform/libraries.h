// Shared libraries borrowed at run time.
#pragma once
#include "platform/handle.h"

namespace pixkit::platform {

// 0 when the library cannot be loaded. On Windows a name without a path is looked for beside the component first, then
// where the system looks. On the portable side the names "zlib1.dll" and "zlib.dll" stand for the system's zlib; other
// names are given to the dynamic loader as they are.
Handle LoadLibraryA(const char* name) noexcept;
// Null when the library does not export the function.
void* GetProcAddress(Handle library, const char* function) noexcept;
bool FreeLibrary(Handle library) noexcept;

using UniqueLibrary = UniqueHandle<&FreeLibrary>;

} // namespace pixkit::platform
