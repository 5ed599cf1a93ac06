#include "platform/win32/text/Uniscribe.h"
#include "platform/faults.h"
#include "platform/win32/system/SystemLibrary.h"
#include <mutex>

namespace pixkit::platform {

namespace {

template <class Function>
bool find(HMODULE library, const char* name, Function& function) noexcept {
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(library, name)));
    return function != nullptr && !faultDue(SeamCall::getProcAddress);
}

bool findAll(HMODULE library, Uniscribe& found) noexcept {
    return find(library, "ScriptStringAnalyse", found.ScriptStringAnalyse) &&
           find(library, "ScriptStringFree", found.ScriptStringFree) &&
           find(library, "ScriptStringGetLogicalWidths", found.ScriptStringGetLogicalWidths) &&
           find(library, "ScriptString_pSize", found.ScriptString_pSize) &&
           find(library, "ScriptString_pLogAttr", found.ScriptString_pLogAttr) &&
           find(library, "ScriptStringOut", found.ScriptStringOut);
}

} // namespace

Lock& uniscribeInUse() noexcept {
    static constinit Lock mutex;
    return mutex;
}

const Uniscribe* uniscribe() noexcept {
    static constinit Lock mutex;
    static Uniscribe found;
    static bool isComplete = false; // looked for anew as long as it is not
    const std::scoped_lock lock(mutex);
    if (isComplete) return &found;
    const HMODULE library = loadSystemLibrary(L"usp10.dll");
    if (library == nullptr) return nullptr;
    isComplete = findAll(library, found);
    if (!isComplete) ::FreeLibrary(library);
    return isComplete ? &found : nullptr;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
