// Why the system refused something to do with a file.
#pragma once
#include "diagnostics/Outcome.h"

namespace pixkit {

// What the last function of platform/files.h that failed says of it, or `otherwise` where that says nothing to a
// person. To be called before any other of them is.
Reason fileReason(Reason otherwise) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
