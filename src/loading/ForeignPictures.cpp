#include "loading/ForeignPictures.h"
#include "codecs/FileNotes.h"
#include "codecs/SystemLimits.h"
#include "platform/gdi.h"
#include "platform/pictures.h"
#include "shared/AlphaChannel.h"
#include "shared/AlphaType.h"
#include "surface/HostAccess.h"
#include <cstring>
#include <utility>

namespace pixkit {

namespace {

using platform::PictureType;

// Draws a picture over a whole image.
bool drawOver(const platform::StdPicture& picture, cPixSheet& image) {
    const auto dc = image.LoadDIBinDC(true);
    const bool drawn = dc != 0 && picture.Render(dc, 0, 0, image.Width(), image.Height());
    platform::GdiFlush();
    image.LoadDIBinDC(false);
    return drawn;
}

// What a metafile leaves of the alpha bytes says nothing, so it is drawn twice: where nobody else has the images,
// because a picture may be an object of the program's, whose code does as it likes with the host.
Outcome convertMetafile(const platform::StdPicture& picture, cPixSheet& host) {
    cPixSheet black, white;
    black.Unattended(host.Unattended());
    white.Unattended(host.Unattended());
    const std::int32_t width = picture.Width();
    const std::int32_t height = picture.Height();
    if (const Reason limit = systemLimit(host, width, height)) return refused(limit);
    if (!host.InitializeDIB(width, height)) return HostAccess::outcome(host);
    if (!white.InitializeDIB(width, height)) return HostAccess::outcome(white);
    black.SwapDIBs(&host);
    const PixelView backdrop = HostAccess::pixels(white);
    std::memset(backdrop.bits, 255, backdrop.stride * backdrop.height);
    if (!drawOver(picture, black) || !drawOver(picture, white)) return refused("the system cannot draw the metafile");
    if (host.Handle() != 0) return refused("the picture gave the object another image while it was drawn");
    host.SwapDIBs(&black);
    host.Alpha(alphaFromTwoBackgrounds(HostAccess::pixels(host), backdrop));
    HostAccess::ImageType(host, picture.Type() == PictureType::metafile ? imgWMF : imgEMF);
    return done();
}

} // namespace

ReadResult LoadSystemPicture(std::span<const std::uint8_t> Stream, cPixSheet& Host) {
    if (const Reason limit = fileLimit(Host, Stream)) return ReadResult::forbidden(limit);
    const auto picture = platform::OleLoadPicture(Stream, HostAccess::leastSize(Host));
    // Icons have a reader here, which has said no; some loaders take anything for one.
    const auto type = picture ? picture->Type() : PictureType::none;
    if (type != PictureType::bitmap && type != PictureType::metafile && type != PictureType::enhancedMetafile)
        return ReadResult::otherFormat("the system's loader refuses it");
    Outcome outcome = ConvertstdPicTo32bpp(*picture, Host);
    if (outcome) {
        HostAccess::notes(Host) = notesOf(Stream);
        return ReadResult::loaded();
    }
    return {isBeyondLimits(outcome) ? ReadOutcome::forbidden : ReadOutcome::damaged, std::move(outcome)};
}

Outcome ConvertstdPicTo32bpp(const platform::StdPicture& Picture, cPixSheet& Host) {
    switch (Picture.Type()) {
    case PictureType::bitmap:
        return ConvertstdPicTo32bpp(Picture.handle(), Host);
    case PictureType::metafile:
    case PictureType::enhancedMetafile:
        return convertMetafile(Picture, Host);
    default:
        return refused("a system picture that holds no bitmap, icon or metafile");
    }
}

Outcome ConvertstdPicTo32bpp(platform::Handle hBitmap, cPixSheet& Host) {
    constexpr Reason unreadable = "the pixels of the bitmap cannot be read";
    platform::BitmapRecord record;
    if (!platform::GetObjectA(hBitmap, record)) return refused(unreadable);
    if (!Host.InitializeDIB(record.bmWidth, record.bmHeight)) return HostAccess::outcome(Host);
    const PixelView pixels = HostAccess::pixels(Host);
    platform::BitmapInfoHeader header{.biWidth = record.bmWidth, .biHeight = record.bmHeight};
    const auto lines = static_cast<std::uint32_t>(record.bmHeight);
    const platform::ScreenDC screen;
    if (platform::GetDIBits(screen.get(), hBitmap, 0, lines, pixels.bits, header) != record.bmHeight)
        return refused(unreadable);
    // Bitmaps without alpha leave it 0 everywhere, which makes them opaque.
    const AlphaClassification alpha = iparseValidateAlphaChannel(pixels, true, imgNone);
    Host.Alpha(alpha.bIsAlpha);
    HostAccess::ImageType(Host, alpha.imgType);
    return done();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
