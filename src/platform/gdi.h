// Bitmaps and device contexts, under the names of the Windows GDI. The Windows side forwards to the system; the
// portable side keeps memory bitmaps and memory device contexts in an object table of its own. On both a handle that is
// zero, stale (already deleted) or of another kind makes the call fail with the stated value; nothing crashes.
#pragma once
#include "platform/api.h"
#include "platform/handle.h"
#include <array>
#include <cstdint>

namespace pixkit::platform {

// BITMAPINFOHEADER, field for field (40 bytes).
struct BitmapInfoHeader {
    std::uint32_t biSize = 40;
    std::int32_t biWidth = 0;
    std::int32_t biHeight = 0; // positive: rows bottom-up; negative: top-down
    std::uint16_t biPlanes = 1;
    std::uint16_t biBitCount = 32;
    std::uint32_t biCompression = 0; // BI_RGB
    std::uint32_t biSizeImage = 0;
    std::int32_t biXPelsPerMeter = 0;
    std::int32_t biYPelsPerMeter = 0;
    std::uint32_t biClrUsed = 0;
    std::uint32_t biClrImportant = 0;
};
static_assert(sizeof(BitmapInfoHeader) == 40);

// The object types this component asks about; the values are the system's. Any other type is passed through as its
// number.
enum class ObjectType : std::uint32_t { none = 0, dc = 3, font = 6, bitmap = 7, region = 8, memoryDC = 10 };

// The screen's device context (window 0), to be released with ReleaseDC. 0 on failure. On the portable side it stands
// for a 32-bit screen that holds nothing: a bitmap cannot be selected into it.
PIXKIT_API Handle GetDC(Handle window) noexcept;
PIXKIT_API bool ReleaseDC(Handle window, Handle dc) noexcept;

// A memory device context with a 1 x 1 stock bitmap selected. 0 on failure.
PIXKIT_API Handle CreateCompatibleDC(Handle dc) noexcept;
PIXKIT_API bool DeleteDC(Handle dc) noexcept;

// Selects a bitmap into a memory device context and returns the bitmap that was selected before; 0 when either handle
// is not valid or the bitmap is selected into another device context.
PIXKIT_API Handle SelectObject(Handle dc, Handle object) noexcept;

// Frees a bitmap, a font, a region (regions.h) or a memory device context (the system frees a memory DC through
// DeleteObject too). A bitmap that is selected dies when it is deselected.
PIXKIT_API bool DeleteObject(Handle object) noexcept;
using UniqueBitmap = UniqueHandle<DeleteObject>;

PIXKIT_API ObjectType GetObjectType(Handle object) noexcept;

// Whether two handles name one object. On Windows 32 of their bits count, and interfaces that pass only those leave
// open whether zeros or the sign fill the rest.
PIXKIT_API bool isSameObject(Handle first, Handle second) noexcept;

// The colours of a bitmap of 8 bits: bytes B, G, R, 0 in the memory of each entry (RGBQUAD).
using ColorTable = std::array<std::uint32_t, 256>;

// A bitmap of 24 or 32 bits, or of 8 with its colours, whose pixels the caller reaches through `bits` (rows padded to
// four bytes, every byte 0 at first: fresh pages of the system). Returns 0, and null `bits`, on failure.
PIXKIT_API Handle CreateDIBSection(Handle dc, const BitmapInfoHeader& header, void** bits,
                                   const ColorTable* colors = nullptr) noexcept;

// Copies `lines` rows from row `start` (counted in the order that header.biHeight asks for) of a bitmap into `bits` at
// header's size, BI_RGB: 24 or 32 bits (alpha 0 where the bitmap has none), or from a bitmap of 8 bits its 8 bits and
// `colors`. Rows are padded to four bytes. Returns the number of rows copied, 0 on failure. A bitmap may be
// selected: the system says that it must not, and gives its pixels all the same.
PIXKIT_API int GetDIBits(Handle dc, Handle bitmap, std::uint32_t start, std::uint32_t lines, void* bits,
                         BitmapInfoHeader& header, ColorTable* colors = nullptr) noexcept;

// What GetObject tells of a bitmap (BITMAP).
struct BitmapRecord {
    std::int32_t bmWidth = 0;
    std::int32_t bmHeight = 0; // never negative
    std::uint16_t bmBitsPixel = 0;
};
// False for anything but a bitmap.
PIXKIT_API bool GetObjectA(Handle bitmap, BitmapRecord& record) noexcept;

// --- drawing. Coordinates count from the top left corner of what the device context draws on, and what lies outside of
// it is left out; on Windows they are logical ones, with all that a mapping mode may do. Areas of 32-bit pixels keep
// their alpha when they are copied; pixels that come from 24 bits get alpha 0.

// RECT: right and bottom lie just outside.
struct Rect {
    std::int32_t left = 0, top = 0, right = 0, bottom = 0;
    bool operator==(const Rect&) const = default;
};
enum class RegionKind : std::int32_t { error = 0, empty = 1, simple = 2, complex = 3 };
// What drawing into a device context can reach, as the smallest rectangle around it.
PIXKIT_API RegionKind GetClipBox(Handle dc, Rect& box) noexcept;

inline constexpr std::uint32_t rasterCopy = 0x00CC0020; // SRCCOPY, the one raster operation asked for
// Copies a rectangle from one device context to another, or within one.
PIXKIT_API bool BitBlt(Handle dc, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                       Handle source, std::int32_t sourceX, std::int32_t sourceY,
                       std::uint32_t rasterOperation) noexcept;

// Draws a rectangle of a DIB of 24 or 32 bits whose rows `startScan` to `startScan + lines` are at `bits`. sourceY
// counts upwards from the lower edge of the DIB. Returns the number of rows taken; 0 on failure, for an empty rectangle
// and for one that lies beside the DIB.
PIXKIT_API int SetDIBitsToDevice(Handle dc, std::int32_t x, std::int32_t y, std::uint32_t width, std::uint32_t height,
                                 std::int32_t sourceX, std::int32_t sourceY, std::uint32_t startScan,
                                 std::uint32_t lines, const void* bits, const BitmapInfoHeader& header) noexcept;

enum class StretchMode : std::int32_t { none = 0, blackOnWhite = 1, whiteOnBlack = 2, colorOnColor = 3, halftone = 4 };
// Returns the mode before; none on failure.
PIXKIT_API StretchMode SetStretchBltMode(Handle dc, StretchMode mode) noexcept;

// BLENDFUNCTION, field for field.
struct BlendFunction {
    std::uint8_t BlendOp = 0; // source over
    std::uint8_t BlendFlags = 0;
    std::uint8_t SourceConstantAlpha = 255;
    std::uint8_t AlphaFormat = 0; // 1: the source has alpha, and its colour is premultiplied by it
};
// Draws a rectangle over another, stretched to its size (nearest pixels, whatever the stretch mode). False, and nothing
// drawn, for negative sizes, a rectangle that does not lie within the source, rectangles of one device context that
// overlap, and alpha that is asked of a source without. Rounding is the system's own; the portable side truncates.
PIXKIT_API bool AlphaBlend(Handle dc, std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height,
                           Handle source, std::int32_t sourceX, std::int32_t sourceY, std::int32_t sourceWidth,
                           std::int32_t sourceHeight, BlendFunction blend) noexcept;

// Waits for drawing that the system may have put off: to be called before the bits of a bitmap are touched.
PIXKIT_API void GdiFlush() noexcept;

// The screen's device context for the length of a scope.
class ScreenDC {
  public:
    ScreenDC() noexcept : m_dc(GetDC(0)) {}
    ~ScreenDC() {
        if (m_dc != 0) ReleaseDC(0, m_dc);
    }
    ScreenDC(const ScreenDC&) = delete;
    ScreenDC& operator=(const ScreenDC&) = delete;
    Handle get() const noexcept { return m_dc; }

  private:
    Handle m_dc;
};

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
