// Icons and cursors of the system's, read and made.
#include "codecs/ico/IcoImage.h"
#include "codecs/ico/IcoMask.h"
#include "codecs/ico/IcoScale.h"
#include "codecs/ico/cICOparser.h"
#include "kernels/kernels.h"
#include "platform/gdi.h"
#include "platform/icons.h"
#include "shared/AlphaChannel.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <limits>
#include <vector>

namespace pixkit {

namespace {

using platform::UniqueBitmap;

// A bitmap's pixels with 32 bits each, rows bottom-up; empty on failure.
struct BitmapPixels {
    std::size_t width = 0, height = 0;
    std::uint16_t bitCount = 0; // of the bitmap
    std::vector<std::uint8_t> bytes;
};

BitmapPixels pixelsOf(platform::Handle bitmap) {
    platform::BitmapRecord record;
    if (!platform::GetObjectA(bitmap, record) || record.bmWidth <= 0 || record.bmHeight <= 0) return {};
    // No store holds more; and where bytes are counted in 32 bits, those of a large mask would be miscounted.
    if (std::int64_t{record.bmWidth} * record.bmHeight > std::numeric_limits<std::int32_t>::max() / 4) return {};
    BitmapPixels pixels{
        static_cast<std::size_t>(record.bmWidth), static_cast<std::size_t>(record.bmHeight), record.bmBitsPixel, {}};
    pixels.bytes.resize(pixels.width * pixels.height * 4);
    platform::BitmapInfoHeader header;
    header.biWidth = record.bmWidth;
    header.biHeight = record.bmHeight;
    const platform::ScreenDC screen;
    const int rows = platform::GetDIBits(screen.get(), bitmap, 0, static_cast<std::uint32_t>(record.bmHeight),
                                         pixels.bytes.data(), header);
    return rows == record.bmHeight ? std::move(pixels) : BitmapPixels{};
}

// Why the host may not take an icon of these bitmaps, the second of which a monochrome one lacks.
Reason limitOf(platform::Handle mask, platform::Handle color, const cPixSheet& host) {
    platform::BitmapRecord ofMask, ofColor;
    platform::GetObjectA(mask, ofMask);
    platform::GetObjectA(color, ofColor);
    const auto pixelsOf = [](const platform::BitmapRecord& of) {
        return std::max(1.0 * of.bmWidth * of.bmHeight, 0.0);
    };
    const bool isMonochrome = color == 0;
    const platform::BitmapRecord& image = isMonochrome ? ofMask : ofColor;
    const double height = isMonochrome ? image.bmHeight / 2 : image.bmHeight;
    const double besides = 4 * (pixelsOf(ofMask) + pixelsOf(image)) + image.bmWidth * height;
    return HostAccess::limits(host).problem(image.bmWidth, height, besides);
}

// One byte for each pixel of the icon: not 0 where the mask's is white. Clear where the sizes do not agree.
std::vector<std::uint8_t> maskBytes(const BitmapPixels& mask, std::size_t width, std::size_t height,
                                    std::size_t firstRow) {
    std::vector<std::uint8_t> bytes(width * height);
    if (mask.width != width || mask.height < firstRow + height) return bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = mask.bytes[(firstRow * width + i) * 4];
    return bytes;
}

// Within the cursor where it is the picture's own, which may lie outside of the picture.
CursorHotspot cursorHotspot(const SourcePicture& source, const IconEntrySize& size, CursorHotspot wanted) {
    const CursorHotspot own = icoHotspot(source.pixels, source.hotspot, static_cast<std::size_t>(size.Width),
                                         static_cast<std::size_t>(size.Height));
    return {wanted.x < 0 ? std::min(own.x, size.Width - 1) : wanted.x,
            wanted.y < 0 ? std::min(own.y, size.Height - 1) : wanted.y};
}

// Rows from the top, padded to two bytes.
UniqueBitmap maskBitmap(ConstPixelView pixels) {
    const std::size_t length = (pixels.width + 15) / 16 * 2;
    std::vector<std::uint8_t> rows(length * pixels.height);
    for (std::size_t y = 0; y < pixels.height; ++y)
        icoMask(&rows[y * length], pixels.rowFromTop(y), pixels.width);
    return UniqueBitmap(platform::CreateMonochromeBitmap(static_cast<std::int32_t>(pixels.width),
                                                         static_cast<std::int32_t>(pixels.height), rows.data()));
}

} // namespace

Outcome cICOparser::ConvertstdPicTo32bpp(platform::Handle hIcon, cPixSheet& Host) {
    Host.DestroyDIB();
    platform::IconInfo info;
    if (!platform::GetIconInfo(hIcon, info)) return refused("neither an icon nor a cursor nor a bitmap");
    const UniqueBitmap maskBitmap(info.hbmMask);
    const UniqueBitmap colorBitmap(info.hbmColor);
    if (const Reason limit = limitOf(maskBitmap.get(), colorBitmap.get(), Host)) return refused(limit);
    const BitmapPixels mask = pixelsOf(maskBitmap.get());
    const bool isMonochrome = !colorBitmap;
    const BitmapPixels color = isMonochrome ? mask : pixelsOf(colorBitmap.get());
    const std::size_t height = isMonochrome ? color.height / 2 : color.height;
    if (mask.bytes.empty() || height == 0) // without the mask, what it hides would be seen
        return refused("the bitmaps of the icon cannot be read");
    if (!Host.InitializeDIB(static_cast<std::int32_t>(color.width), static_cast<std::int32_t>(height)))
        return HostAccess::outcome(Host);
    const PixelView pixels = HostAccess::pixels(Host);
    // In a monochrome icon the lower half, whose rows come first, is what the colours are elsewhere.
    std::copy_n(color.bytes.begin(), pixels.stride * height, pixels.bits);
    const bool isCursor = !info.fIcon;
    if (color.bitCount != 32 || !completeIconByAlpha(Host, isCursor))
        completeIconByMask(Host, maskBytes(mask, color.width, height, isMonochrome ? height : 0), isCursor);
    if (isCursor)
        HostAccess::hotspot(Host, {static_cast<std::int32_t>(info.xHotspot), static_cast<std::int32_t>(info.yHotspot)});
    return done();
}

Outcome cICOparser::CreateIcon(const SourcePicture& Source, IconEntrySize Size,
                               const std::optional<CursorHotspot>& Hotspot, platform::UniqueIcon& Icon,
                               const Limits& Bounds) {
    std::vector<IconEntrySize> sizes;
    if (Outcome checked = EntrySizes({&Source, 1}, {&Size, 1}, sizes, Bounds); !checked) return checked;
    Size = sizes.front();
    platform::IconInfo info{.fIcon = !Hotspot};
    if (Hotspot) {
        const CursorHotspot hotspot = cursorHotspot(Source, Size, *Hotspot);
        if (hotspot.x >= Size.Width || hotspot.y >= Size.Height)
            return refused("the hotspot lies outside of the cursor");
        info.xHotspot = static_cast<std::uint32_t>(hotspot.x);
        info.yHotspot = static_cast<std::uint32_t>(hotspot.y);
    }
    const auto width = static_cast<std::size_t>(Size.Width), height = static_cast<std::size_t>(Size.Height);
    auto pixels = icoScale(Source.pixels, Source.alpha != AlphaNone, width, height);
    const ConstPixelView view{pixels.data(), width, height, width * 4};
    const UniqueBitmap mask = maskBitmap(view);
    void* bits = nullptr;
    const UniqueBitmap color(platform::CreateDIBSection(0, {.biWidth = Size.Width, .biHeight = Size.Height}, &bits));
    if (!mask || !color) return refused(noMemoryForPixels);
    const PixelView colors{static_cast<std::uint8_t*>(bits), width, height, view.stride};
    for (std::size_t y = 0; y < height; ++y)
        kernels::table().straighten(colors.row(y), view.row(y), width);
    proveStraight(colors);
    platform::GdiFlush();
    info.hbmMask = mask.get();
    info.hbmColor = color.get();
    Icon.reset(platform::CreateIconIndirect(info));
    return doneIf(bool(Icon), "the system makes no such icon");
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
