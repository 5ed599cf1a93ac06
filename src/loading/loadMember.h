// The frame of every member that loads.
#pragma once
#include "surface/attempt.h"
#include <utility>

namespace pixkit {

class LoadRequest;

// Empties the host and offers the source to the readers in their order (LoadDispatch.cpp). SaveFormat keeps its bytes.
Outcome spt_LoadPictureEx(cPixSheet& host, LoadRequest& request, bool SaveFormat);

// Runs `load`, which returns its Outcome (surface/attempt.h). A load that fails leaves the instance empty, wherever it
// failed: here is the place that sees to it, and readers need not.
template <class... Parts, class Load>
bool loadMember(const Call<Parts...>& call, cPixSheet& sheet, Load&& load) noexcept {
    Outcome outcome = guardedOutcome(call, std::forward<Load>(load));
    if (!outcome) sheet.DestroyDIB();
    return HostAccess::outcome(sheet, std::move(outcome));
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
