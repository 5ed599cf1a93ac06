#include "platform/libraries.h"
#include "platform/faults.h"
#include <cstring>
#include <cwchar>
#include <windows.h>

namespace pixkit::platform {

namespace {
HMODULE native(Handle handle) noexcept {
    return reinterpret_cast<HMODULE>(handle);
}

// The system looks beside the program, not beside a component that the program loaded from elsewhere: a library that
// is shipped with the component is found by its full name. Null when there is none, or the name is a path already.
HMODULE loadFromOwnFolder(const char* name) noexcept {
    if (std::strpbrk(name, "\\/:") != nullptr) return nullptr;
    MEMORY_BASIC_INFORMATION memory; // the allocation that holds this function is the module it was linked into
    if (::VirtualQuery(reinterpret_cast<const void*>(&loadFromOwnFolder), &memory, sizeof memory) == 0) return nullptr;
    wchar_t path[MAX_PATH];
    const DWORD length = ::GetModuleFileNameW(static_cast<HMODULE>(memory.AllocationBase), path, MAX_PATH);
    if (length == 0 || length >= MAX_PATH) return nullptr;
    wchar_t* const fileName = std::wcsrchr(path, L'\\');
    if (fileName == nullptr) return nullptr;
    const auto room = static_cast<int>(path + MAX_PATH - (fileName + 1));
    if (::MultiByteToWideChar(CP_ACP, 0, name, -1, fileName + 1, room) == 0) return nullptr;
    return ::LoadLibraryW(path);
}
} // namespace

Handle LoadLibraryA(const char* name) noexcept {
    if (name == nullptr || *name == '\0' || faultDue(SeamCall::loadLibrary)) return 0;
    const HMODULE own = loadFromOwnFolder(name);
    return reinterpret_cast<Handle>(own != nullptr ? own : ::LoadLibraryA(name));
}

void* GetProcAddress(Handle library, const char* function) noexcept {
    // To the system, 0 would mean the program itself.
    if (library == 0 || function == nullptr || faultDue(SeamCall::getProcAddress)) return nullptr;
    return reinterpret_cast<void*>(::GetProcAddress(native(library), function));
}

bool FreeLibrary(Handle library) noexcept {
    return library != 0 && ::FreeLibrary(native(library)) != FALSE;
}

} // namespace pixkit::platform
