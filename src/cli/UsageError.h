#pragma once
#include <stdexcept>

namespace pixkit::cli {

// The command line asks for something that no input could give; the program ends with exitUsage.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
