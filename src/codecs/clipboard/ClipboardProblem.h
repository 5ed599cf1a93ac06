// Why a clipboard could not be opened, in words.
#pragma once
#include "diagnostics/Outcome.h"
#include "platform/clipboard.h"

namespace pixkit {

// Of one that is not open.
inline Reason clipboardProblem(const platform::OpenClipboard& clipboard) noexcept {
    if (!clipboard.exists()) return "there is no clipboard";
    return "another program keeps the clipboard open";
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
