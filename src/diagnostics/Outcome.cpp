#include "diagnostics/Outcome.h"
#include <new>
#include <stdexcept>

namespace pixkit {

Outcome::Outcome(const std::exception& error) noexcept : Outcome(noMemory) {
    // What containers say of more elements than there are addresses is for their authors.
    if (dynamic_cast<const std::bad_alloc*>(&error) != nullptr) return;
    if (dynamic_cast<const std::length_error*>(&error) != nullptr) return;
    try {
        if (*error.what() == '\0') {
            m_reason = "a run-time error";
        } else {
            m_own = std::make_shared<const std::string>(error.what());
            m_reason = "";
        }
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): that is the reason then
    }
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
