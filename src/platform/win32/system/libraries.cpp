#include "platform/libraries.h"
#include "platform/faults.h"
#include "platform/win32/system/Borrowing.h"
#include <initializer_list>
#include <new>
#include <string>
#include <string_view>

namespace pixkit::platform {

namespace {
HMODULE native(Handle handle) noexcept {
    return reinterpret_cast<HMODULE>(handle);
}

// What the system writes into a buffer that is given to `ask`, of any length; empty on failure.
template <class Ask>
std::wstring anyLength(Ask&& ask) {
    for (std::wstring text(MAX_PATH, L'\0');; text.resize(text.size() * 2)) {
        const auto room = static_cast<DWORD>(text.size());
        const DWORD length = ask(text.data(), room);
        if (length >= room) continue; // cut
        text.resize(length);
        return text;
    }
}

// The module that this function was linked into is the allocation that holds it.
HMODULE component() noexcept {
    MEMORY_BASIC_INFORMATION memory;
    const bool isKnown = ::VirtualQuery(reinterpret_cast<const void*>(&component), &memory, sizeof memory) != 0;
    return isKnown ? static_cast<HMODULE>(memory.AllocationBase) : nullptr;
}

// With a separator at its end; empty on failure.
std::wstring pathOf(LibraryFolder folder) {
    if (folder == LibraryFolder::system) {
        const auto ask = [](wchar_t* text, DWORD room) {
            return static_cast<DWORD>(::GetSystemDirectoryW(text, room));
        };
        const std::wstring path = anyLength(ask);
        return path.empty() ? path : path + L'\\';
    }
    const HMODULE module = folder == LibraryFolder::component ? component() : nullptr; // null is the program
    const std::wstring path =
        anyLength([&](wchar_t* text, DWORD room) { return ::GetModuleFileNameW(module, text, room); });
    return path.substr(0, path.find_last_of(L'\\') + 1); // nowhere is the greatest number
}
} // namespace

HMODULE loadFrom(LibraryFolder folder, const wchar_t* name) noexcept {
    // LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR, _APPLICATION_DIR and _SYSTEM32, which headers for old systems leave out.
    constexpr DWORD trustedFolders = 0x100 | 0x200 | 0x800;
    try {
        std::wstring path = pathOf(folder);
        if (path.empty()) return nullptr;
        path += name;
        const HMODULE module = ::LoadLibraryExW(path.c_str(), nullptr, trustedFolders);
        if (module != nullptr || ::GetLastError() != ERROR_INVALID_PARAMETER) return module;
        return ::LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

Handle LoadLibraryA(const char* name) noexcept {
    const std::string_view letters = name != nullptr ? name : "";
    if (letters.empty() || letters.find_first_of("\\/:") != std::string_view::npos) return 0;
    if (faultDue(SeamCall::loadLibrary)) return 0;
    try {
        const std::wstring wide(letters.begin(), letters.end()); // names of libraries are ASCII
        for (const LibraryFolder folder : {LibraryFolder::component, LibraryFolder::program, LibraryFolder::system}) {
            if (const HMODULE module = loadFrom(folder, wide.c_str()); module != nullptr)
                return reinterpret_cast<Handle>(module);
        }
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): as if there were none
    }
    return 0;
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
// SPDX-License-Identifier: MIT
