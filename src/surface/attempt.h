// The frame of the members of cPixSheet.
#pragma once
#include "diagnostics/guard.h"
#include "surface/HostAccess.h"
#include <utility>

namespace pixkit {

// Runs `body`, which returns its Outcome, under the guard, and keeps that outcome for LastErrorText. Whether it was
// success. What a member gives beyond that, its body stores in a variable:
//     std::int32_t count = 0;
//     attempt(Call(*this, "Count", "All", All), [&] {
//         if (m_Handle == 0) return refused(noImage);
//         count = ...;
//         return done();
//     });
//     return count;
// A body that calls another member, of this instance or of another, and has nothing to add returns the m_outcome of
// that instance.
template <class... Values, class Body>
bool attempt(const Call<cPixSheet, Values...>& call, Body&& body) noexcept {
    return HostAccess::outcome(call.instance(), guardedOutcome(call, std::forward<Body>(body)));
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
