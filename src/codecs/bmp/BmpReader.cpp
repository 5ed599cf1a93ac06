// From the pixels of a BMP file to the store.
#include "codecs/bmp/BmpInfo.h"
#include "codecs/bmp/BmpRows.h"
#include "codecs/bmp/cBMPparser.h"
#include "coding/ByteReader.h"
#include "coding/RowBytes.h"
#include "shared/AlphaChannel.h"
#include "surface/HostAccess.h"

namespace pixkit {

// Of rows at least half must be there, so that a file that was cut short still shows what it has, while a header that
// lies cannot take more than twice what the data fills. Run-length codes must be able to describe every pixel.
Reason cBMPparser::problem(const BmpInfo& info, std::uint64_t bytes) noexcept {
    const auto height = static_cast<std::uint64_t>(info.height);
    const bool canFill = info.isRunLength()
                             ? BmpRunLength::mostPixels(bytes) >= static_cast<std::uint64_t>(info.width) * height
                             : bytes >= (info.rowBytes() * height + 1) / 2;
    return canFill ? Reason() : "BMP: too little data for the pixels";
}

PictureNotes cBMPparser::notes(const BmpInfo& info, std::span<const std::uint8_t> start, std::uint64_t bytes) noexcept {
    constexpr std::uint32_t withProfile = 124, embedded = 0x4D424544, linked = 0x4C494E4B; // BITMAPV5HEADER
    PictureNotes notes;
    const auto width = static_cast<std::uint64_t>(info.width), height = static_cast<std::uint64_t>(info.height);
    const std::uint64_t lastRow = packedRowBytes(width, info.bitCount); // whose padding may be missing
    notes.has16Bits = info.bitCount == 64;
    notes.endsEarly = !info.isRunLength() && bytes < info.rowBytes() * (height - 1) + lastRow;
    const ByteReader reader(start);
    const std::uint32_t space = reader.littleEndian32(70).value_or(0);
    notes.hasProfile = reader.littleEndian32(14).value_or(0) >= withProfile && (space == embedded || space == linked);
    return notes;
}

ReadResult cBMPparser::LoadStream(std::span<const std::uint8_t> Stream, cPixSheet& Host) {
    Reason why;
    const auto info = readBmpInfo(Stream, why);
    if (!info) return ReadResult::damaged(why);
    const auto data = Stream.subspan(info->pixelOffset);
    if (const Reason reason = problem(*info, data.size())) return ReadResult::damaged(reason);
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
        if (info->bitCount == 64) alpha.bIsAlpha = premultiplyStraight(pixels, true); // colours always are straight
        if (alpha.bIsAlpha != AlphaNone) alpha.imgType = imgBmpARGB;
    }
    Host.Alpha(alpha.bIsAlpha);
    HostAccess::ImageType(Host, alpha.imgType);
    HostAccess::notes(Host) = notes(*info, Stream, data.size());
    return ReadResult::loaded();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
