#include "platform/win32/system/SystemLibrary.h"
#include "platform/faults.h"

namespace pixkit::platform {

HMODULE loadSystemLibrary(const wchar_t* name) noexcept {
    if (faultDue(SeamCall::loadLibrary)) return nullptr;
    constexpr DWORD searchSystem32 = 0x800; // LOAD_LIBRARY_SEARCH_SYSTEM32, which headers for old systems leave out
    const HMODULE module = ::LoadLibraryExW(name, nullptr, searchSystem32);
    if (module != nullptr || ::GetLastError() != ERROR_INVALID_PARAMETER) return module;
    return ::LoadLibraryW(name);
}

} // namespace pixkit::platform
