// The DLL as a whole: where it is, and what keeps it loaded.
#pragma once
#include <string>
#include <windows.h>

namespace pixkit::com {

// Set once, when the system loads the DLL.
void setModuleInstance(HINSTANCE module) noexcept;
HINSTANCE moduleInstance() noexcept;

// Full path of the DLL; empty when there is no memory for it.
std::wstring modulePath() noexcept;

// Keeps the DLL loaded while it lives: every object, class factory and LockServer call holds one.
class ModuleReference {
  public:
    ModuleReference() noexcept;
    ~ModuleReference();
    ModuleReference(const ModuleReference&) = delete;
    ModuleReference& operator=(const ModuleReference&) = delete;
};

// Whether anything keeps it.
bool isModuleInUse() noexcept;

// The same for LockServer, whose two halves come in two calls.
void lockModule(bool lock) noexcept;

} // namespace pixkit::com
