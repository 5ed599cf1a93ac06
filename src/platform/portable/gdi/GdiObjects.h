// What stands behind the portable side's handles of bitmaps, regions, fonts and device contexts.
#pragma once
#include "coding/RowBytes.h"
#include "platform/gdi.h"
#include "platform/portable/HandleTable.h"
#include "platform/portable/gdi/PixelMemory.h"
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <vector>

namespace pixkit::platform {

struct Bitmap {
    explicit Bitmap(CheckedSize bytes) noexcept : pixels(bytes) {}
    // Rows counted from the top of the picture.
    std::uint8_t* rowFromTop(std::size_t y) const noexcept {
        return pixels.data() + (topDown ? y : height - 1 - y) * stride;
    }

    PixelMemory pixels;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t stride = 0;
    std::uint16_t bitCount = 0;
    bool topDown = false;
    bool isMonochrome = false;          // to others it has 1 bit a pixel; here it has 8
    std::unique_ptr<ColorTable> colors; // of 8 bits
    Handle selectedInto = 0;            // the device context that holds it; always 0 for the stock bitmap
    bool condemned = false;             // deleted while selected: dies when it is deselected
};

class OpenFont; // portable/text/

struct GdiObject {
    ObjectType type = ObjectType::none;
    std::unique_ptr<Bitmap> bitmap; // of a bitmap
    Handle selected = 0;            // of a memory device context: the bitmap in it
    StretchMode stretchMode = StretchMode::blackOnWhite;
    std::vector<Rect> rectangles;   // of a region
    std::shared_ptr<OpenFont> font; // of a font
};
using ObjectRef = std::shared_ptr<GdiObject>;

struct Gdi {
    HandleTable<GdiObject> objects{HandleKind::gdi};
    std::mutex selection; // held while bitmaps and device contexts get to know or leave each other
    Handle stockBitmap = 0;
};

Gdi& gdi() noexcept;

// The handle of a new bitmap; 0 when there is no room for it. May throw std::bad_alloc.
Handle addBitmap(std::unique_ptr<Bitmap> bitmap);

// The object when it is of this type; null otherwise.
ObjectRef findObject(Handle handle, ObjectType type) noexcept;

// A device context of either kind; null otherwise.
ObjectRef findDC(Handle handle) noexcept;

// The bitmap that is selected into a memory device context; null when there is none to draw on.
ObjectRef findSelectedBitmap(Handle dc) noexcept;

inline std::uint64_t rowsOf(const BitmapInfoHeader& header) noexcept {
    return static_cast<std::uint64_t>(std::abs(std::int64_t{header.biHeight}));
}
// Whether the header describes pixels that this side can hold: the size of them all must fit biSizeImage.
bool isSupported(const BitmapInfoHeader& header, const ColorTable* colors = nullptr) noexcept;

// Pixels of one row in another depth: 8 bits through `colors` into 24 or 32, those two into each other, alpha 0 where
// there is none to copy. Rows of the same depth may overlap.
void convertRow(std::uint16_t fromBits, const ColorTable* colors, const std::uint8_t* from, std::uint8_t* to,
                std::uint16_t toBits, std::size_t width) noexcept;
inline void convertRow(const Bitmap& source, const std::uint8_t* from, std::uint8_t* to, std::uint16_t toBits,
                       std::size_t width) noexcept {
    convertRow(source.bitCount, source.colors.get(), from, to, toBits, width);
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
