// GIF: opaque or fully transparent pixels; never a store that the codes cannot fill. Codes are counted as they are
// decoded.
#include "coding/lzw/LzwDecoder.h"
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    for (std::size_t at = 0; at < bytes && at < 16; ++at) {
        const std::span codes(data + at + 1, bytes - at - 1);
        const unsigned codeSize = data[at] % 13U;
        const std::size_t count = std::size_t{1} << (at + 8);
        require(lzwDescribes(codes, codeSize, count) == bool(LzwIndexes(codes, codeSize, count)));
    }
    cPixSheet sheet;
    load(sheet, arrayOf(data, bytes));
    if (sheet.ImageType() != imgGIF) return 0;
    require(pixelCount(sheet) <= bytes * 4 * 4096); // codes have 2 bits at least, strings 4096 indexes at most
    for (std::size_t i = 0; i < pixelCount(sheet); ++i) {
        const std::uint8_t* const p = sheet.BitsPointer() + i * 4;
        require(p[3] == 255 || (p[0] + p[1] + p[2] + p[3] == 0 && sheet.Alpha() == AlphaSimple));
    }
    return 0;
}
