#include "loading/ForeignPictures.h"
#include "platform/gdi.h"
#include "platform/pictures.h"
#include "shared/AlphaChannel.h"
#include "shared/AlphaType.h"
#include "shared/StdPictures.h"
#include "surface/HostAccess.h"
#include <cstring>

namespace pixkit {

namespace {

using platform::PictureType;

// Draws a picture over the whole host.
bool drawOver(const platform::StdPicture& picture, cPixSheet& host) {
    const auto dc = host.LoadDIBinDC(true);
    const bool drawn = dc != 0 && picture.Render(dc, 0, 0, host.Width(), host.Height());
    platform::GdiFlush();
    host.LoadDIBinDC(false);
    return drawn;
}

// What a metafile leaves of the alpha bytes says nothing, so it is drawn twice.
bool convertMetafile(const platform::StdPicture& picture, cPixSheet& host) {
    cPixSheet white;
    const std::int32_t width = picture.Width();
    const std::int32_t height = picture.Height();
    if (!host.InitializeDIB(width, height) || !white.InitializeDIB(width, height)) return false;
    const PixelView backdrop = HostAccess::pixels(white);
    std::memset(backdrop.bits, 255, backdrop.stride * backdrop.height);
    if (!drawOver(picture, host) || !drawOver(picture, white)) return false;
    host.Alpha(alphaFromTwoBackgrounds(HostAccess::pixels(host), backdrop));
    HostAccess::ImageType(host, picture.Type() == PictureType::metafile ? imgWMF : imgEMF);
    return true;
}

} // namespace

ReadResult LoadSystemPicture(std::span<const std::uint8_t> Stream, cPixSheet& Host) {
    const auto picture = iparseArrayToPicture(Stream, 0, Stream.size());
    if (!picture) return ReadResult::otherFormat("the loader of the system refuses it");
    if (!ConvertstdPicTo32bpp(*picture, Host)) return ReadResult::damaged("the loader's picture cannot be taken over");
    return ReadResult::loaded();
}

bool ConvertstdPicTo32bpp(const platform::StdPicture& Picture, cPixSheet& Host) {
    switch (Picture.Type()) {
    case PictureType::bitmap:
        return ConvertstdPicTo32bpp(Picture.handle(), Host);
    case PictureType::metafile:
    case PictureType::enhancedMetafile:
        return convertMetafile(Picture, Host);
    default:
        return false;
    }
}

bool ConvertstdPicTo32bpp(platform::Handle hBitmap, cPixSheet& Host) {
    platform::BitmapRecord record;
    if (!platform::GetObjectA(hBitmap, record) || !Host.InitializeDIB(record.bmWidth, record.bmHeight)) return false;
    const PixelView pixels = HostAccess::pixels(Host);
    platform::BitmapInfoHeader header{.biWidth = record.bmWidth, .biHeight = record.bmHeight};
    const auto lines = static_cast<std::uint32_t>(record.bmHeight);
    const platform::ScreenDC screen;
    if (platform::GetDIBits(screen.get(), hBitmap, 0, lines, pixels.bits, header) != record.bmHeight) return false;
    // Bitmaps without alpha leave it 0 everywhere, which makes them opaque.
    const AlphaClassification alpha = iparseValidateAlphaChannel(pixels, true, imgNone);
    Host.Alpha(alpha.bIsAlpha);
    HostAccess::ImageType(Host, alpha.imgType);
    return true;
}

} // namespace pixkit
