// A report in words.
#pragma once
#include "diagnostics/ErrorReport.h"
#include <string>
#include <vector>

namespace pixkit {

// Both may throw std::bad_alloc.
std::vector<ErrorReport::Version> versionsInUse();
// Everything but the text itself, which this is to become.
std::string reportText(const ErrorReport& report);

} // namespace pixkit
// SPDX-License-Identifier: MIT
