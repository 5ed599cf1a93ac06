#include "platform/libraries.h"
#include "platform/faults.h"
#include <windows.h>

namespace pixkit::platform {

namespace {
HMODULE native(Handle handle) noexcept {
    return reinterpret_cast<HMODULE>(handle);
}
} // namespace

Handle LoadLibraryA(const char* name) noexcept {
    if (name == nullptr || *name == '\0' || faultDue(SeamCall::loadLibrary)) return 0;
    return reinterpret_cast<Handle>(::LoadLibraryA(name));
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
