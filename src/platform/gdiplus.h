// GDI+: the flat API of the system's library as far as the bridge to it (gdiplus/) needs it, under the names that the
// system gives its functions. Objects are the library's; whoever makes one disposes of it before the shutdown.
#pragma once
#include "platform/api.h"
#include "platform/gdi.h"
#include "platform/handle.h"
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <tuple>
#include <vector>

namespace pixkit::platform {

struct GpImage; // bitmaps too
struct GpGraphics;
struct GpImageAttributes;

// Of the many reasons for a failure none is told apart.
enum class GpStatus : std::int32_t { Ok = 0, GenericError = 1 };

enum class GpPixelFormat : std::int32_t { argb32 = 0x0026200A, pargb32 = 0x000E200B }; // straight, premultiplied

// Pixels in somebody's memory: the first byte of the top row, and the way in bytes from there to the next one, which
// is negative where rows are stored bottom-up.
struct GpScan {
    std::int32_t width = 0, height = 0, stride = 0;
    GpPixelFormat format = GpPixelFormat::pargb32;
    std::uint8_t* scan0 = nullptr;
};

enum class GpInterpolationMode : std::int32_t { nearestNeighbor = 5, highQualityBicubic = 7 };
enum class GpPixelOffsetMode : std::int32_t { half = 4 }; // positions count from the corners of pixels
enum class GpWrapMode : std::int32_t { tileFlipXY = 3 };  // beyond its edges a picture goes on mirrored

// Rows are what red, green, blue, alpha and one contribute to red, green, blue, alpha (and nothing).
using GpColorMatrix = std::array<std::array<float, 5>, 5>;

// How a picture is written: what kind of encoder, by its MIME type, and for JPEG the quality, 1 .. 100 (else 0).
struct GpEncoding {
    const char* mimeType = nullptr;
    std::int32_t quality = 0;
};

// Calls may throw, which counts as their failure, but for those that give something back (shutdown, dispose, delete)
// and the flush.
struct GdiplusApi {
    template <class... Parameters>
    using Call = std::function<GpStatus(Parameters...)>;

    Call<std::uintptr_t& /*token*/> GdiplusStartup;
    Call<std::uintptr_t /*token*/> GdiplusShutdown;

    // From a copy of the bytes, read from their beginning.
    Call<std::span<const std::uint8_t>, GpImage*&> GdipLoadImageFromStream;
    // Around pixels that stay where they are, and outlive it.
    Call<const GpScan&, GpImage*&> GdipCreateBitmapFromScan0;
    Call<GpImage*> GdipDisposeImage;
    Call<GpImage*, std::uint32_t&> GdipGetImageWidth, GdipGetImageHeight;
    // Copies the pixels of a bitmap, all of them, in the format that is asked for, and unlocks it again.
    Call<GpImage*, const GpScan&> GdipBitmapLockBits;
    Call<GpImage*, const GpEncoding&, std::vector<std::uint8_t>&> GdipSaveImageToStream;

    // Fails for contexts that do not count in their own pixels from their top left corner.
    Call<Handle /*dc*/, GpGraphics*&> GdipCreateFromHDC;
    Call<GpImage*, GpGraphics*&> GdipGetImageGraphicsContext;
    Call<GpGraphics*> GdipDeleteGraphics;
    Call<GpGraphics*> GdipFlush;
    Call<GpGraphics*, GpInterpolationMode> GdipSetInterpolationMode;
    Call<GpGraphics*, GpPixelOffsetMode> GdipSetPixelOffsetMode;
    Call<GpGraphics*, const Rect&> GdipSetClipRectI;
    // What is drawn from now on is moved, or turned clockwise, before all that was asked for earlier.
    Call<GpGraphics*, float, float> GdipTranslateWorldTransform;
    Call<GpGraphics*, float /*degrees*/> GdipRotateWorldTransform;
    Call<GpImageAttributes*&> GdipCreateImageAttributes;
    Call<GpImageAttributes*> GdipDisposeImageAttributes;
    Call<GpImageAttributes*, GpWrapMode> GdipSetImageAttributesWrapMode;
    Call<GpImageAttributes*, const GpColorMatrix&> GdipSetImageAttributesColorMatrix;
    Call<GpGraphics*, GpImage*, const Rect& /*to*/, const Rect& /*from*/, const GpImageAttributes*>
        GdipDrawImageRectRectI;

    auto functions() noexcept {
        return std::tie(GdiplusStartup, GdiplusShutdown, GdipLoadImageFromStream, GdipCreateBitmapFromScan0,
                        GdipDisposeImage, GdipGetImageWidth, GdipGetImageHeight, GdipBitmapLockBits,
                        GdipSaveImageToStream, GdipCreateFromHDC, GdipGetImageGraphicsContext, GdipDeleteGraphics,
                        GdipFlush, GdipSetInterpolationMode, GdipSetPixelOffsetMode, GdipSetClipRectI,
                        GdipTranslateWorldTransform, GdipRotateWorldTransform, GdipCreateImageAttributes,
                        GdipDisposeImageAttributes, GdipSetImageAttributesWrapMode, GdipSetImageAttributesColorMatrix,
                        GdipDrawImageRectRectI);
    }
    // Whether nothing is missing.
    bool isComplete() noexcept {
        return std::apply([](const auto&... function) { return (bool(function) && ...); }, functions());
    }
};

// The library in use, loaded when it is first asked for: the provider's, else the system's. Null where there is none,
// which is asked once. A library lives as long as somebody holds it.
std::shared_ptr<const GdiplusApi> gdiplusLibrary() noexcept;
// Lets go of it; whoever asks next has it loaded again.
void forgetGdiplusLibrary() noexcept;

// Gives the library, for the whole process, in the system's place; one that is not complete counts as none. An empty
// provider, the initial state, leaves it to the system (it must not make images or ask for the library itself): on
// Windows gdiplus.dll, on the portable side nothing.
using GdiplusProvider = std::function<GdiplusApi()>;
PIXKIT_API void setGdiplusProvider(GdiplusProvider provider);

// The system's library, loaded anew; not complete where there is none.
GdiplusApi systemGdiplus();

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
