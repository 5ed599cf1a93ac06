// How GDI+ is made to write a file, whether it then heeds the quality or not.
#pragma once
#include "platform/gdiplus.h"
#include "shared/PixelView.h"
#include <vector>

namespace pixkit {

// None on failure. Pixels are premultiplied, those of a JPEG opaque.
std::vector<std::uint8_t> encodeByGdiplus(const platform::GdiplusApi& api, ConstPixelView pixels,
                                          const platform::GpEncoding& encoding) noexcept;

} // namespace pixkit
// SPDX-License-Identifier: MIT
