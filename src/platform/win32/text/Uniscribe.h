// The system's library that lays out text of every script, borrowed at run time: systems older than Windows 2000 may
// lack it.
#pragma once
#include "platform/Lock.h"
#include <windows.h>

#include <usp10.h>

namespace pixkit::platform {

struct Uniscribe {
    decltype(&::ScriptStringAnalyse) ScriptStringAnalyse = nullptr;
    decltype(&::ScriptStringFree) ScriptStringFree = nullptr;
    decltype(&::ScriptStringGetLogicalWidths) ScriptStringGetLogicalWidths = nullptr;
    decltype(&::ScriptString_pSize) ScriptString_pSize = nullptr;
    decltype(&::ScriptString_pLogAttr) ScriptString_pLogAttr = nullptr;
    decltype(&::ScriptStringOut) ScriptStringOut = nullptr;
};

// Held during each call of Uniscribe: Wine's gets entangled in its caches when two threads call it at once.
Lock& uniscribeInUse() noexcept;

// Null where there is none. Once there, it stays as long as the process, as in every program that shows text.
const Uniscribe* uniscribe() noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
