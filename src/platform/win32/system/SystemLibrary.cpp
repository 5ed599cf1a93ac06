#include "platform/win32/system/SystemLibrary.h"
#include "platform/faults.h"
#include "platform/win32/system/Borrowing.h"
#include <initializer_list>

namespace pixkit::platform {

namespace {

// Whether the side-by-side store has it: then the loader takes it from there wherever it would search.
bool isInStore(const wchar_t* name) noexcept {
    ACTCTX_SECTION_KEYED_DATA found{};
    found.cbSize = sizeof found;
    return ::FindActCtxSectionStringW(0, nullptr, ACTIVATION_CONTEXT_SECTION_DLL_REDIRECTION, name, &found) != FALSE;
}

} // namespace

HMODULE loadSystemLibrary(const wchar_t* name) noexcept {
    if (faultDue(SeamCall::loadLibrary)) return nullptr;
    constexpr DWORD searchSystem32 = 0x800; // LOAD_LIBRARY_SEARCH_SYSTEM32, which headers for old systems leave out
    HMODULE module = ::LoadLibraryExW(name, nullptr, searchSystem32);
    if (module != nullptr || ::GetLastError() != ERROR_INVALID_PARAMETER) return module;
    if (isInStore(name)) return ::LoadLibraryW(name);
    for (const LibraryFolder folder : {LibraryFolder::system, LibraryFolder::component, LibraryFolder::program}) {
        module = loadFrom(folder, name);
        if (module != nullptr) break;
    }
    return module;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
