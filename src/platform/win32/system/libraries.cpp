#include "platform/libraries.h"
#include "platform/faults.h"
#include <cstring>
#include <new>
#include <string>
#include <windows.h>

namespace pixkit::platform {

namespace {
HMODULE native(Handle handle) noexcept {
    return reinterpret_cast<HMODULE>(handle);
}

// A module's full path, of any length; empty on failure.
std::wstring pathOf(HMODULE module) {
    for (std::wstring path(MAX_PATH, L'\0');; path.resize(path.size() * 2)) {
        const auto room = static_cast<DWORD>(path.size());
        const DWORD length = ::GetModuleFileNameW(module, path.data(), room);
        if (length >= room) continue; // cut
        path.resize(length);
        return path;
    }
}

// The system looks beside the program, not beside a component that the program loaded from elsewhere: a library that
// is shipped with the component is found by its full name. Null when there is none, or the name is a path already.
HMODULE loadFromOwnFolder(const char* name) noexcept {
    if (std::strpbrk(name, "\\/:") != nullptr) return nullptr;
    MEMORY_BASIC_INFORMATION memory; // the allocation that holds this function is the module it was linked into
    if (::VirtualQuery(reinterpret_cast<const void*>(&loadFromOwnFolder), &memory, sizeof memory) == 0) return nullptr;
    try {
        const std::wstring own = pathOf(static_cast<HMODULE>(memory.AllocationBase));
        const std::size_t folder = own.find_last_of(L'\\') + 1; // nowhere is the greatest number
        const int units = ::MultiByteToWideChar(CP_ACP, 0, name, -1, nullptr, 0);
        if (folder == 0 || units <= 0) return nullptr;
        std::wstring path = own.substr(0, folder);
        path.resize(folder + static_cast<std::size_t>(units));
        ::MultiByteToWideChar(CP_ACP, 0, name, -1, path.data() + folder, units);
        return ::LoadLibraryW(path.c_str());
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
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
