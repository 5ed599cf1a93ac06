#include "codecs/StatedSize.h"
#include "codecs/bmp/BmpInfo.h"
#include "coding/ByteReader.h"
#include "coding/GifFrame.h"
#include "coding/JpegFrame.h"
#include <algorithm>
#include <array>

namespace pixkit {

namespace {

// Where IHDR is the first chunk, as the PNG standard wants it.
StatedSize sizeOfPng(std::span<const std::uint8_t> start) noexcept {
    constexpr std::array<std::uint8_t, 8> signature = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    constexpr std::array<std::uint8_t, 4> type = {'I', 'H', 'D', 'R'};
    if (start.size() < 24 || !std::ranges::equal(start.first(8), signature) ||
        !std::ranges::equal(start.subspan(12, 4), type))
        return {};
    const ByteReader reader(start);
    const auto width = reader.bigEndian32(16), height = reader.bigEndian32(20);
    return {static_cast<double>(width.value_or(0)), static_cast<double>(height.value_or(0))};
}

} // namespace

StatedSize statedSize(std::span<const std::uint8_t> start) noexcept {
    Reason unused;
    if (const auto bmp = readBmpInfo(start, unused))
        return {static_cast<double>(bmp->width), static_cast<double>(bmp->height)};
    if (const auto jpeg = readJpegFrame(start))
        return {static_cast<double>(jpeg->width), static_cast<double>(jpeg->height)};
    GifFrame gif;
    findGifFrame(start, gif);
    if (gif.height != 0) return {static_cast<double>(gif.width), static_cast<double>(gif.height)};
    return sizeOfPng(start);
}

} // namespace pixkit
