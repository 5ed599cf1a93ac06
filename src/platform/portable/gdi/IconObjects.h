// What stands behind the portable side's handles of icons.
#pragma once
#include "platform/icons.h"
#include "platform/portable/gdi/GdiObjects.h"
#include <memory>

namespace pixkit::platform {

struct Icon {
    std::size_t width() const noexcept { return color ? color->width : mask->width; }
    std::size_t height() const noexcept { return color ? color->height : mask->height / 2; }

    IconInfo info; // its handles are not used
    std::unique_ptr<Bitmap> mask, color;
};

// The icon or cursor; null when the handle is none.
std::shared_ptr<const Icon> findIcon(Handle icon) noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
