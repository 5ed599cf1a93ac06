// What the C++ runtime does when it cannot go on. Its own handler would write the exception's name to the standard
// error output of whoever loaded the component, and bring the machinery for reading such names along.
#include <cstdlib>

namespace __gnu_cxx {

void __verbose_terminate_handler() { // NOLINT(clang-diagnostic-reserved-identifier)
    std::abort();
}

} // namespace __gnu_cxx
// SPDX-License-Identifier: MIT
