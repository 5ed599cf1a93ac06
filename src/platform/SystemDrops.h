// What each side of the seam knows of drops.
#pragma once
#include <cstdint>
#include <span>
#include <string>

namespace pixkit::platform {

// A file name of the narrow code page in UTF-8; on the portable side names are that. May throw std::bad_alloc.
std::string fromNarrow(std::span<const std::uint8_t> name);

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
