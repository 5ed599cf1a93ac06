#pragma once

namespace pixkit::platform {

// Holds a value that nothing destroys: the end of a process, or of a DLL's stay in it, is no time to give things back.
template <class Value>
union NeverDestroyed {
    template <class... Arguments>
    explicit constexpr NeverDestroyed(Arguments... arguments) noexcept : value(arguments...) {}
    constexpr ~NeverDestroyed() {}
    Value value;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
