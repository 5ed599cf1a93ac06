#include "platform/gdiplus.h"

namespace pixkit::platform {

GdiplusApi systemGdiplus() {
    return {};
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
