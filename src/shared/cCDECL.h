// Calls exported functions of a borrowed library in the C calling convention.
#pragma once
#include "platform/libraries.h"

namespace pixkit {

// Holds a library for as long as its functions are called. Empty when the library cannot be loaded.
class cCDECL {
  public:
    cCDECL() noexcept = default;
    explicit cCDECL(const char* libraryName) noexcept : m_library(platform::LoadLibraryA(libraryName)) {}

    // An export as a function of this type; null when the library lacks it.
    template <class Function>
    Function* function(const char* name) const noexcept {
        if (!m_library) return nullptr;
        return reinterpret_cast<Function*>(platform::GetProcAddress(m_library.get(), name));
    }

  private:
    platform::UniqueLibrary m_library;
};

// Whether a library can be loaded and exports a function.
inline bool iparseValidateDLL(const char* DllName, const char* dllProc) noexcept {
    return cCDECL(DllName).function<void()>(dllProc) != nullptr;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
