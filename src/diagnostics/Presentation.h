// When a report is shown to the person in front of the program.
#pragma once
#include "diagnostics/ErrorReport.h"

namespace pixkit {

// Gives the report to the presenter, unless it is not its turn. What the presenter throws comes out.
void present(const ErrorReport& report);

} // namespace pixkit
// SPDX-License-Identifier: MIT
