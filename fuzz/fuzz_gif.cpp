// GIF from an array: a picture of whole pixels, opaque or fully transparent, or none and nothing left behind; never a
// store that the codes cannot fill. Codes are counted as they are decoded.
#include "coding/lzw/LzwDecoder.h"
#include "surface/cPixSheet.h"
#include <cstdlib>
#include <vector>

using namespace pixkit;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    for (std::size_t at = 0; at < bytes && at < 16; ++at) {
        const std::span codes(data + at + 1, bytes - at - 1);
        const unsigned codeSize = data[at] % 13U;
        const std::size_t count = std::size_t{1} << (at + 8);
        if (lzwDescribes(codes, codeSize, count) != bool(LzwIndexes(codes, codeSize, count))) std::abort();
    }
    cPixSheet sheet;
    const bool loaded = sheet.LoadPicture_Stream(ByteArray(std::vector<std::uint8_t>(data, data + bytes)));
    if (loaded != (sheet.Handle() != 0)) std::abort();
    if (sheet.ImageType() != imgGIF) return 0;
    const auto pixels = static_cast<std::size_t>(sheet.Width()) * static_cast<std::size_t>(sheet.Height());
    if (pixels == 0 || pixels > bytes * 4 * 4096)
        std::abort(); // codes have 2 bits at least, strings 4096 indexes at most
    for (std::size_t i = 0; i < pixels; ++i) {
        const std::uint8_t* const pixel = sheet.BitsPointer() + i * 4;
        const bool isClear = pixel[0] == 0 && pixel[1] == 0 && pixel[2] == 0 && pixel[3] == 0;
        if (pixel[3] != 255 && !(isClear && sheet.Alpha() == AlphaSimple)) std::abort();
    }
    return 0;
}
