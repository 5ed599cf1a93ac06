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

// Whether anything keeps it: one of those, or a token of GDI+, which only the DLL can end.
bool isModuleInUse() noexcept;

// From the first object on GDI+, once started, stays so until the DLL may go: starting it for each of many objects that
// come and go would take longer than what they do. Programs that unload the DLL without asking whether it may go leave
// GDI+ started: the system forbids to end it then.
void keepGdiplus() noexcept;
void giveGdiplusBack() noexcept;

// The same for LockServer, whose two halves come in two calls.
void lockModule(bool lock) noexcept;

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
