#include "codecs/clipboard/StoredPixels.h"
#include "coding/ByteReader.h"
#include "coding/ByteWriter.h"
#include "surface/HostAccess.h"
#include <algorithm>
#include <array>
#include <limits>

namespace pixkit {

namespace {

constexpr std::size_t headerSize = 24;

// Those that an instance with an image can have.
constexpr std::array<std::uint32_t, 15> imageTypes = {imgNone,   imgBitmap,  imgWMF,        imgIcon,         imgEMF,
                                                      imgCursor, imgBmpARGB, imgBmpPARGB,   imgIconARGB,     imgGIF,
                                                      imgPNG,    imgPNGicon, imgCursorARGB, imgCheckerBoard, imgTGA};

} // namespace

std::vector<std::uint8_t> makeStoredPixels(const SourcePicture& picture) {
    const ConstPixelView image = picture.pixels;
    const std::span pixels(image.bits, image.stride * image.height);
    std::vector<std::uint8_t> block;
    block.reserve(headerSize + pixels.size());
    ByteWriter out(block);
    out.littleEndian32(image.width);
    out.littleEndian32(image.height);
    for (const std::int32_t value :
         {std::int32_t{picture.alpha}, std::int32_t{picture.imageType}, picture.hotspot.x, picture.hotspot.y})
        out.littleEndian32(static_cast<std::uint32_t>(value));
    out.bytes(pixels);
    return block;
}

ReadResult readStoredPixels(std::span<const std::uint8_t> block, cPixSheet& host) {
    const ByteReader in(block);
    const auto field = [&](std::size_t index) { return in.littleEndian32(index * 4).value_or(0); };
    const auto signedField = [&](std::size_t index) { return static_cast<std::int32_t>(field(index)); };
    constexpr std::uint32_t longest = std::numeric_limits<std::int32_t>::max();
    const std::uint64_t size = field(0) <= longest && field(1) <= longest ? std::uint64_t{field(0)} * field(1) * 4 : 0;
    if (size == 0 || in.size() < headerSize || in.size() - headerSize < size)
        return ReadResult::damaged("the stored pixels are not all there");
    if (field(2) > AlphaComplex || std::ranges::count(imageTypes, field(3)) == 0)
        return ReadResult::damaged("the stored pixels are of an unknown kind");
    if (const Reason limit = HostAccess::limits(host).problem(field(0), field(1))) return ReadResult::forbidden(limit);
    if (!host.InitializeDIB(signedField(0), signedField(1))) return ReadResult::damaged(noMemoryForPixels);
    std::ranges::copy(block.subspan(headerSize, static_cast<std::size_t>(size)), HostAccess::pixels(host).bits);
    host.Alpha(static_cast<AlphaTypeEnum>(field(2)));
    HostAccess::ImageType(host, static_cast<eImageFormat>(field(3)));
    HostAccess::hotspot(host, {signedField(4), signedField(5)});
    return ReadResult::loaded();
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
