// The formats that the portable side's picture loader reads, one function each: a picture, or null when the bytes are
// not of that format or damaged. May throw std::bad_alloc, after which nothing is left behind.
#pragma once
#include "platform/pictures.h"

namespace pixkit::platform {

// The first frame of a GIF (87a or 89a) at its own size, as a bitmap of 8 bits; indexes that its colour table lacks are
// black. Transparent pixels have alpha 0 and keep their colour. Null without a colour table, too.
std::unique_ptr<StdPicture> loadGif(std::span<const std::uint8_t> bytes);

// A JPEG of 8 bits a channel as an opaque bitmap of 32 bits, decoded by libturbojpeg: gray, RGB, YCbCr, CMYK and YCCK,
// baseline and progressive. What is missing of a file that was cut short is as the library fills it in. Null, too, when
// the library is not there. As small as `least` allows (OleLoadPicture).
std::unique_ptr<StdPicture> loadJpeg(std::span<const std::uint8_t> bytes, LeastSize least);

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
