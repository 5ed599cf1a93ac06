// What the registry knows of the component.
#pragma once
#include <windows.h>

namespace pixkit::com {

// For whom: everyone on the machine (needs administrator rights) or the current user only.
enum class Scope { machine, user };

// Writes class, interface and type library of this DLL; when that fails half-way, nothing of it stays.
HRESULT registerServer(Scope scope) noexcept;

// Removes all of it, whatever of it there is, as long as it is this DLL's: what another copy has registered stays,
// which is no failure. What the DLL of the other word size shares with this one stays for as long as that one is
// registered.
HRESULT unregisterServer(Scope scope) noexcept;

} // namespace pixkit::com
// SPDX-License-Identifier: MIT
