// What giflib makes of a GIF file.
#pragma once
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <gif_lib.h>
#include <vector>

namespace pixkit::test {

struct GifDecoded {
    bool isWhole = false; // read to its end
    int pictures = 0;
    std::int32_t width = 0, height = 0;
    std::vector<std::array<std::uint8_t, 4>> pixels; // B, G, R, A, top row first; all 0 where transparent
};

inline GifDecoded decodeGif(const std::uint8_t* data, std::size_t bytes) {
    struct Source {
        const std::uint8_t* at;
        std::size_t left;
    } source{data, bytes};
    const auto read = [](GifFileType* file, GifByteType* out, int length) {
        auto& from = *static_cast<Source*>(file->UserData);
        const std::size_t count = std::min(static_cast<std::size_t>(length), from.left);
        std::memcpy(out, from.at, count);
        from.at += count;
        from.left -= count;
        return static_cast<int>(count);
    };
    GifDecoded decoded;
    GifFileType* file = DGifOpen(&source, read, nullptr);
    if (file == nullptr) return decoded;
    decoded.isWhole = DGifSlurp(file) == GIF_OK && source.left == 0;
    decoded.pictures = file->ImageCount;
    if (decoded.isWhole && file->ImageCount == 1) {
        const SavedImage& image = file->SavedImages[0];
        GraphicsControlBlock control;
        const int transparent =
            DGifSavedExtensionToGCB(file, 0, &control) == GIF_OK ? control.TransparentColor : NO_TRANSPARENT_COLOR;
        decoded.width = image.ImageDesc.Width;
        decoded.height = image.ImageDesc.Height;
        const std::size_t count = static_cast<std::size_t>(decoded.width) * static_cast<std::size_t>(decoded.height);
        for (std::size_t i = 0; i < count; ++i) {
            const int index = image.RasterBits[i];
            if (index >= file->SColorMap->ColorCount) decoded.isWhole = false;
            if (index == transparent || !decoded.isWhole) {
                decoded.pixels.push_back({});
                continue;
            }
            const GifColorType& color = file->SColorMap->Colors[index];
            decoded.pixels.push_back({color.Blue, color.Green, color.Red, 255});
        }
    }
    DGifCloseFile(file, nullptr);
    return decoded;
}

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
