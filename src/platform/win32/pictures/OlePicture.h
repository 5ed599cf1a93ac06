// System pictures that come from outside, for the doors to the system.
#pragma once
#include "platform/pictures.h"

struct IPicture;

namespace pixkit::platform {

// A picture around an object of the system's, to which it holds a reference of its own. Null for null.
std::unique_ptr<StdPicture> wrapPicture(IPicture* picture);

// The other way: the system's object in a picture that this side made (pictures.h), which goes on holding it.
IPicture* pictureBehind(const StdPicture& picture) noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
