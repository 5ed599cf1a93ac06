// The images that an icon or cursor file holds, each as its own header describes it.
#pragma once
#include "codecs/bmp/BmpInfo.h"
#include "coding/RowBytes.h"
#include "surface/cPixSheet.h"
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace pixkit {

struct IcoEntry {
    std::int32_t width = 0, height = 0; // above 0
    std::int32_t bitDepth = 0;          // bits of a source pixel
    bool isPNG = false;
    CursorHotspot hotspot;                 // 0, 0 in an icon file
    std::int32_t statedHeight = 0;         // the directory's
    std::int32_t statedWidth = 0;          //
    std::size_t statedSize = 0;            // in bytes; at most payload.size()
    std::span<const std::uint8_t> payload; // up to where another image begins, or to the end of the file
};

struct IcoDirectory {
    bool isCursor = false;
    std::vector<IcoEntry> entries; // in the file's order, without those that cannot be read
};

// Whether the data begins like an icon or cursor file of at least one image.
bool isIconFile(std::span<const std::uint8_t> file) noexcept;

// Nothing when the data is no such file, or when no image in it can be read as far as its headers tell; `why` then
// receives the reason, of several images that of the first.
std::optional<IcoDirectory> readIcoDirectory(std::span<const std::uint8_t> file, Reason& why);

// A bitmap within an icon file.
struct IcoBitmap {
    BmpInfo info; // its height is the picture's, without the mask's rows
    std::span<const std::uint8_t> colors;
    std::span<const std::uint8_t> mask; // what there is of it
    std::size_t maskRowBytes() const noexcept {
        return static_cast<std::size_t>(paddedRowBytes(static_cast<std::uint64_t>(info.width), 1));
    }
};

// Nothing when the entry's payload is no bitmap, or lacks rows of colours; `why` then receives the reason.
std::optional<IcoBitmap> readIcoBitmap(const IcoEntry& entry, Reason& why);

} // namespace pixkit
// SPDX-License-Identifier: MIT
