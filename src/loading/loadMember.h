// The frame of every member that loads.
#pragma once
#include "diagnostics/guard.h"
#include "surface/cPixSheet.h"
#include <utility>

namespace pixkit {

// Runs `load` under the guard. A load that fails leaves the instance empty, wherever it failed: here is the place that
// sees to it, and readers need not.
template <class... Parts, class Load>
bool loadMember(const Call<Parts...>& call, cPixSheet& sheet, Load&& load) noexcept {
    const bool isLoaded = guarded(call, false, std::forward<Load>(load));
    if (!isLoaded) sheet.DestroyDIB();
    return isLoaded;
}

} // namespace pixkit
