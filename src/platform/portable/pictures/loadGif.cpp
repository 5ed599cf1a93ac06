#include "coding/GifFrame.h"
#include "coding/Interlace.h"
#include "coding/lzw/LzwDecoder.h"
#include "platform/gdi.h"
#include "platform/portable/gdi/GdiObjects.h"
#include "platform/portable/pictures/BitmapPicture.h"
#include "platform/portable/pictures/loaders.h"
#include <cstring>

namespace pixkit::platform {

namespace {

// Alpha in the fourth byte, which the colours of a bitmap that others make do not have.
ColorTable colorTableOf(std::span<const std::uint8_t> file, const GifFrame& frame) noexcept {
    ColorTable table;
    auto* const entries = reinterpret_cast<std::uint8_t*>(table.data());
    for (std::size_t i = 0; i < table.size(); ++i) {
        std::uint8_t* const entry = entries + i * 4;
        const std::uint8_t* const color = file.data() + frame.tblOffset + 3 * i;
        for (std::size_t channel = 0; channel < 3; ++channel)
            entry[channel] = i < frame.gColorsUsed ? color[2 - channel] : std::uint8_t{0};
        entry[3] = frame.TransIndex == i ? 0 : 255;
    }
    return table;
}

// Other systems' loaders believe what a graphic control extension says of its length, and lose their way.
bool hasCommonControl(std::span<const std::uint8_t> file, const GifFrame& frame) noexcept {
    return frame.g89aStart == 0 || (file[frame.g89aStart + 2] == 4 && file[frame.g89aStart + 7] == 0);
}

} // namespace

std::unique_ptr<StdPicture> loadGif(std::span<const std::uint8_t> bytes) {
    GifFrame frame;
    if (findGifFrame(bytes, frame) != GifWalk::found || frame.gColorsUsed == 0) return nullptr;
    if (frame.width == 0 || frame.height == 0 || !hasCommonControl(bytes, frame)) return nullptr;
    const LzwIndexes indexes(joinGifCodes(bytes, frame), bytes[frame.codeSizeAt], frame.width * frame.height);
    if (!indexes) return nullptr;

    BitmapInfoHeader header{.biWidth = static_cast<std::int32_t>(frame.width),
                            .biHeight = static_cast<std::int32_t>(frame.height)};
    header.biBitCount = 8;
    const ColorTable colors = colorTableOf(bytes, frame);
    UniqueHandle<&DeleteObject> bitmap(CreateDIBSection(0, header, nullptr, &colors));
    if (!bitmap) return nullptr;
    Bitmap& target = *findObject(bitmap.get(), ObjectType::bitmap)->bitmap;
    *target.colors = colors; // with their alpha
    const std::uint8_t* row = indexes.data();
    for (const InterlacePass& pass : frame.isInterlaced ? std::span<const InterlacePass>(gifPasses) : wholePicture)
        for (std::size_t y = pass.startRow; y < frame.height; y += pass.rowStep, row += frame.width)
            std::memcpy(target.rowFromTop(y), row, frame.width);
    auto picture = std::make_unique<BitmapPicture>(bitmap.get(), true);
    bitmap.release();
    return picture;
}

} // namespace pixkit::platform
// SPDX-License-Identifier: MIT
