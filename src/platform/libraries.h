// Shared libraries borrowed at run time.
#pragma once
#include "platform/handle.h"

namespace pixkit::platform {

// 0 when the library cannot be loaded. Names have no folder: on Windows the component's own, the program's and the
// system's are looked at, in this order, and never the current one nor those of the path, where anybody may have put a
// library. What the library needs itself is sought beside it, in the program's and in the system's folder; systems
// before Windows 7 without its updates cannot be told so.
//
// On the portable side the names "zlib1.dll" and "zlib.dll" stand for the system's zlib; other names are given to the
// dynamic loader as they are. Without a folder it looks where LD_LIBRARY_PATH says, if the user has set that (an empty
// entry in it is the current folder; programs with more rights than their user ignore it), then where the system keeps
// libraries.
Handle LoadLibraryA(const char* name) noexcept;
// Null when the library does not export the function.
void* GetProcAddress(Handle library, const char* function) noexcept;
bool FreeLibrary(Handle library) noexcept;

using UniqueLibrary = UniqueHandle<&FreeLibrary>;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
