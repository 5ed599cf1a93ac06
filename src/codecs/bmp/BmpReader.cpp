// From the pixels of a BMP file to the store.
#include "codecs/bmp/BmpInfo.h"
#include "codecs/bmp/BmpRows.h"
#include "codecs/bmp/cBMPparser.h"
#include "shared/AlphaChannel.h"
#include "surface/HostAccess.h"

namespace pixkit {

namespace {

// Whether the data is worth a store. Of rows at least half must be there, so that a file that was cut short still shows
// what it has, while a header that lies cannot take more than twice what the data fills. Run-length codes must be able
// to describe every pixel.
bool canFill(const BmpInfo& info, std::size_t bytes) {
    const auto height = static_cast<std::uint64_t>(info.height);
    if (info.isRunLength()) return BmpRunLength::mostPixels(bytes) >= static_cast<std::uint64_t>(info.width) * height;
    return bytes >= (info.rowBytes() * height + 1) / 2;
}

} // namespace

ReadResult cBMPparser::LoadStream(std::span<const std::uint8_t> Stream, cPixSheet& Host) {
    Reason why;
    const auto info = readBmpInfo(Stream, why);
    if (!info) return ReadResult::damaged(why);
    const auto data = Stream.subspan(info->pixelOffset);
    if (!canFill(*info, data.size())) return ReadResult::damaged("BMP: too little data for the pixels");
    if (const Reason limit = HostAccess::limits(Host).problem(info->width, info->height, BmpRows::memory(*info)))
        return ReadResult::forbidden(limit);
    BmpRows rows(*info, data);
    if (!Host.InitializeDIB(info->width, info->height)) return ReadResult::damaged(noMemoryForPixels);
    const PixelView pixels = HostAccess::pixels(Host);
    AlphaClassification alpha;
    if (info->masks.alpha != 0) {
        AlphaOfRows store(pixels, info->isTopDown);
        for (std::size_t y = 0; y < pixels.height; ++y) {
            if (rows.areAsStored()) {
                store.copy(rows.nextRowBytes());
            } else {
                rows.nextRow(store.next());
                store.isWritten();
            }
        }
        alpha = store.finish();
    } else {
        for (std::size_t y = 0; y < pixels.height; ++y)
            rows.nextRow(info->isTopDown ? pixels.rowFromTop(y) : pixels.row(y));
        if (info->bitCount == 64) alpha.bIsAlpha = premultiplyStraight(pixels, true); // which the format says
        if (alpha.bIsAlpha != AlphaNone) alpha.imgType = imgBmpARGB;
    }
    Host.Alpha(alpha.bIsAlpha);
    HostAccess::ImageType(Host, alpha.imgType);
    return ReadResult::loaded();
}

} // namespace pixkit
