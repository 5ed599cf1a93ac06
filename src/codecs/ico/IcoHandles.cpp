// Icons and cursors of the system's.
#include "codecs/ico/IcoMask.h"
#include "codecs/ico/cICOparser.h"
#include "platform/gdi.h"
#include "platform/icons.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <limits>
#include <vector>

namespace pixkit {

namespace {

using UniqueBitmap = platform::UniqueHandle<platform::DeleteObject>;

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

// One byte for each pixel of the icon: not 0 where the mask's is white. Clear where the sizes do not agree.
std::vector<std::uint8_t> maskBytes(const BitmapPixels& mask, std::size_t width, std::size_t height,
                                    std::size_t firstRow) {
    std::vector<std::uint8_t> bytes(width * height);
    if (mask.width != width || mask.height < firstRow + height) return bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = mask.bytes[(firstRow * width + i) * 4];
    return bytes;
}

} // namespace

Outcome cICOparser::ConvertstdPicTo32bpp(platform::Handle hIcon, cPixSheet& Host) {
    Host.DestroyDIB();
    platform::IconInfo info;
    if (!platform::GetIconInfo(hIcon, info)) return refused("neither an icon nor a cursor nor a bitmap");
    const UniqueBitmap maskBitmap(info.hbmMask);
    const UniqueBitmap colorBitmap(info.hbmColor);
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

} // namespace pixkit
