// Pictures made of the input's bytes are written as GIF; giflib must read each, and few colours exactly.
#include "oracle/giflibVerdict.h"
#include "surface/cPixSheet.h"
#include <cstdlib>

using namespace pixkit;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    if (bytes < 6) return 0;
    const std::int32_t width = 1 + data[0] % 120;
    const std::int32_t height = 1 + data[1] % 120;
    const std::uint8_t tolerance = data[2];
    const bool isAdaptive = (data[3] & 1) != 0;
    const bool hasFewColors = (data[3] & 2) != 0; // at most 255, and transparency
    cPixSheet sheet;
    if (!sheet.InitializeDIB(width, height)) std::abort();
    std::size_t next = 4;
    const auto byte = [&](std::int32_t i) {
        if (++next >= bytes) next = 4;
        return static_cast<std::uint8_t>(data[next] + i / 512); // the input again and again, a little different
    };
    for (std::int32_t i = 0; i < width * height; ++i) {
        std::uint8_t* pixel = sheet.BitsPointer() + std::ptrdiff_t{4} * i;
        pixel[0] = byte(i);
        if (hasFewColors) {
            if (pixel[0] == 255) continue; // clear
            pixel[1] = pixel[2] = static_cast<std::uint8_t>(pixel[0] / 2);
            pixel[3] = 255;
        } else {
            for (int channel = 1; channel < 4; ++channel)
                pixel[channel] = byte(i);
        }
    }
    ByteArray file;
    if (!sheet.SaveToStream_GIF(file, isAdaptive, tolerance)) std::abort();
    const test::GifDecoded decoded = test::decodeGif(file.data(), file.size());
    if (!decoded.isWhole || decoded.width != width || decoded.height != height) std::abort();
    for (std::int32_t i = 0; i < width * height; ++i) {
        const std::uint8_t* pixel = sheet.BitsPointer() + ((height - 1 - i / width) * width + i % width) * 4;
        const auto& got = decoded.pixels[static_cast<std::size_t>(i)];
        const bool isClear = pixel[3] < tolerance;
        if (isClear != (got[3] == 0)) std::abort();
        if (isClear || !hasFewColors || !isAdaptive || tolerance == 0) continue;
        if (!std::equal(pixel, pixel + 3, got.begin())) std::abort();
    }
    return 0;
}
