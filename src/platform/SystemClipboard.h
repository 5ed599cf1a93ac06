// The part of the clipboard that differs between the sides of the seam.
#pragma once
#include "platform/clipboard.h"

namespace pixkit::platform {

// The clipboard that all programs share; empty where the system has none. May throw std::bad_alloc.
ClipboardProvider systemClipboard();

} // namespace pixkit::platform
