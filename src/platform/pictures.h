// System picture objects: bitmaps, icons and metafiles that the system itself decodes and draws, under the names of
// OLE.
#pragma once
#include "platform/api.h"
#include "platform/handle.h"
#include <cstdint>
#include <memory>
#include <span>

namespace pixkit::platform {

// What a system picture holds; the values are the system's (PICTYPE_...).
enum class PictureType : std::int16_t {
    uninitialized = -1,
    none = 0,
    bitmap = 1,
    metafile = 2,
    icon = 3,
    enhancedMetafile = 4
};

// A system picture object (the system's IPicture). What it holds stays valid as long as it lives.
class PIXKIT_API StdPicture {
  public:
    StdPicture() noexcept = default;
    StdPicture(const StdPicture&) = delete;
    StdPicture& operator=(const StdPicture&) = delete;
    virtual ~StdPicture() = default;

    virtual PictureType Type() const noexcept = 0;
    // The bitmap, icon or metafile, which the picture keeps; 0 when it holds nothing.
    virtual Handle handle() const noexcept = 0;
    // Natural size in pixels: a bitmap's and icon's own, a metafile's at the screen's resolution. 0 when it has none.
    virtual std::int32_t Width() const noexcept = 0;
    virtual std::int32_t Height() const noexcept = 0;
    // Draws the whole picture into a rectangle of a device context, stretched to it and cut at the context's edges. A
    // bitmap that is selected somewhere cannot be drawn: nothing arrives, although the answer is true.
    // False when there is nothing to draw, the size is not above 0, or nothing can be drawn on. What alpha bytes become
    // is the system's affair: a picture without alpha leaves 0 or 255.
    virtual bool Render(Handle dc, std::int32_t x, std::int32_t y, std::int32_t width,
                        std::int32_t height) const noexcept = 0;
};

// How few pixels a picture may be decoded to; 0: all that it has.
struct LeastSize {
    std::int32_t width = 0, height = 0;
};

// The picture in the bytes of a file; null when the system's loader does not know it or finds it damaged. On Windows
// the loader is OLE's: GIF, JPEG, BMP, icons, WMF with a placeable header, EMF. On the portable side it is the
// project's own for GIF, and JPEG where canLoadJpeg says so. A GIF gives its first frame at the frame's own size; one
// whose codes do not describe each pixel of it is damaged. With `least`, a JPEG may come at an eighth, a quarter or a
// half of its size, rounded up, where neither side is below it: Windows gives all of it.
PIXKIT_API std::unique_ptr<StdPicture> OleLoadPicture(std::span<const std::uint8_t> bytes,
                                                      LeastSize least = {}) noexcept;

// Whether OleLoadPicture may know data that begins so. What the system's own loader knows is its affair: on Windows
// always.
bool mayBePicture(std::span<const std::uint8_t> start) noexcept;

// A picture around a bitmap or icon, which it frees at its end when `own` is true; on failure (null) the caller keeps
// it. Null also for a handle that is not what `type` says, and for the types of metafiles.
PIXKIT_API std::unique_ptr<StdPicture> OleCreatePictureIndirect(Handle image, PictureType type, bool own) noexcept;

// Whether OleLoadPicture reads JPEG and metafiles here: Windows always does; the portable side needs libturbojpeg at
// run time for the one and never reads the other.
PIXKIT_API bool canLoadJpeg() noexcept;
PIXKIT_API bool canLoadMetafiles() noexcept;

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
