// From system pictures, which the system decodes or draws, to the store.
#include "codecs/bmp/cBMPparser.h"
#include "codecs/ico/IcoDirectory.h"
#include "platform/gdi.h"
#include "platform/pictures.h"
#include "shared/modParsers.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <array>
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

// Puts together what a picture looks like over black and over white, into the former: a pixel that shows all of the
// background is transparent, one that shows none is opaque, and between, the darker one is its colour premultiplied.
// Pixels that the picture made of their background, by inverting it, come out opaque.
AlphaTypeEnum alphaFromTwoBackgrounds(PixelView overBlack, ConstPixelView overWhite) noexcept {
    bool transparent = false;
    bool partial = false;
    for (std::size_t y = 0; y < overBlack.height; ++y) {
        std::uint8_t* black = overBlack.row(y);
        const std::uint8_t* white = overWhite.row(y);
        for (std::size_t x = 0; x < overBlack.width; ++x, black += 4, white += 4) {
            int shownThrough = 255; // in the channel that lets least through
            for (int channel = 0; channel < 3; ++channel)
                shownThrough = std::min(shownThrough, std::max(0, white[channel] - black[channel]));
            black[3] = static_cast<std::uint8_t>(255 - shownThrough);
            transparent |= black[3] == 0;
            partial |= black[3] != 0 && black[3] != 255;
        }
    }
    return partial ? AlphaComplex : transparent ? AlphaSimple : AlphaNone;
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

bool convertBitmap(platform::Handle bitmap, cPixSheet& host) {
    platform::BitmapRecord record;
    if (!platform::GetObjectA(bitmap, record) || !host.InitializeDIB(record.bmWidth, record.bmHeight)) return false;
    const PixelView pixels = HostAccess::pixels(host);
    platform::BitmapInfoHeader header{.biWidth = record.bmWidth, .biHeight = record.bmHeight};
    const auto lines = static_cast<std::uint32_t>(record.bmHeight);
    const platform::ScreenDC screen;
    if (platform::GetDIBits(screen.get(), bitmap, 0, lines, pixels.bits, header) != record.bmHeight) return false;
    // Bitmaps without alpha leave it 0 everywhere, which makes them opaque.
    const AlphaClassification alpha = iparseValidateAlphaChannel(pixels, true, imgNone);
    host.Alpha(alpha.bIsAlpha);
    HostAccess::ImageType(host, alpha.imgType);
    return true;
}

// Whether a reader of this component's own has refused the data already. Some systems' loaders might show something of
// it yet, others of the same name not, and some fall over a GIF without colours or an icon that lies outside the file.
bool hasOwnReader(std::span<const std::uint8_t> data) noexcept {
    constexpr std::array<std::uint8_t, 3> gif{'g', 'i', 'f'}; // of any version, in capitals or not
    constexpr std::array<std::uint8_t, 4> png{0x89, 'p', 'n', 'g'};
    const auto begins = [&](std::span<const std::uint8_t> signature) {
        const auto lower = [](std::uint8_t byte) { return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte; };
        return data.size() >= signature.size() &&
               std::ranges::equal(data.first(signature.size()), signature, {}, lower);
    };
    return begins(gif) || begins(png) || isIconFile(data);
}

} // namespace

bool cBMPparser::LoadSystemPicture(std::span<const std::uint8_t> Stream, cPixSheet& Host) {
    if (hasOwnReader(Stream)) return false;
    const auto picture = iparseArrayToPicture(Stream, 0, Stream.size());
    return picture && ConvertstdPicTo32bpp(*picture, Host);
}

bool cBMPparser::ConvertstdPicTo32bpp(const platform::StdPicture& Picture, cPixSheet& Host) {
    const PictureType type = Picture.Type();
    if (type == PictureType::bitmap) return ConvertstdPicTo32bpp(Picture.handle(), Host);
    const bool isMetafile = type == PictureType::metafile || type == PictureType::enhancedMetafile;
    if (isMetafile && convertMetafile(Picture, Host)) return true;
    Host.DestroyDIB();
    return false;
}

bool cBMPparser::ConvertstdPicTo32bpp(platform::Handle hBitmap, cPixSheet& Host) {
    if (convertBitmap(hBitmap, Host)) return true;
    Host.DestroyDIB();
    return false;
}

} // namespace pixkit
