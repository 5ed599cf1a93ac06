// Pictures made of the input's bytes are written as icons of any sizes and depths, sensible or not; what is written
// must come back: every entry, its size and depth, and, where the picture was not scaled, its pixels.
#include "surface/cPixSheet.h"
#include <algorithm>
#include <cstdlib>

using namespace pixkit;

namespace {

void require(bool holds) {
    if (!holds) std::abort();
}

// What a pixel is allowed to come back as; `found` is one of an entry of the picture's own size.
void comparePixel(const std::uint8_t* made, const std::uint8_t* found, bool isPng, std::int32_t bitDepth) {
    if (isPng && bitDepth == 32) {
        require(made[3] == found[3]);
        for (int c = 0; c < 3 && made[3] != 0; ++c)
            require(found[c] == made[c] * 255 / made[3] * made[3] / 255);
    } else if (bitDepth < 32) {
        require(found[3] == (made[3] < 128 ? 0 : 255));
        for (int c = 0; c < 3 && bitDepth == 24 && found[3] != 0; ++c)
            require(found[c] == made[c] * 255 / made[3]);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    if (bytes < 8) return 0;
    std::size_t next = 0;
    const auto byte = [&] {
        if (next >= bytes) next = 0;
        return data[next++];
    };
    cPixSheet sheet;
    const std::int32_t width = 1 + byte() % 70 + (byte() % 16 == 0 ? 230 : 0), height = 1 + byte() % 70; // at times PNG
    require(sheet.InitializeDIB(width, height));
    std::vector<IconEntrySize> sizes(byte() % 4U);
    bool isRefused = false;
    constexpr std::int32_t depths[] = {1, 4, 8, 24, 32, HIGH_COLOR, TRUE_COLOR, TRUE_COLOR_ALPHA, 33, -7};
    constexpr std::int32_t stored[] = {1, 4, 8, 24, 32, 24, 24, 32};
    std::vector<IconSourceSize> expected;
    std::vector<std::int32_t> askedDepths;
    for (IconEntrySize& size : sizes) {
        const unsigned kind = byte() % 8U;
        size = {kind == 0  ? 250 + byte() % 12
                : kind < 4 ? 0
                           : byte() % 80 - (kind == 4),
                kind < 3 ? 0 : byte() % 60, 0};
        const std::size_t depth = byte() % std::size(depths);
        size.bitDepth = depths[depth];
        isRefused |= size.Width < 0 || depth >= std::size(stored);
        if (isRefused) continue;
        const std::int32_t cx = size.Width == 0 ? width : size.Width, cy = size.Height == 0 ? height : size.Height;
        const bool isPng = cx >= 256 || cy >= 256;
        askedDepths.push_back(stored[depth]);
        expected.push_back({cx, cy, isPng ? 32 : stored[depth], isPng ? 1 : 0});
    }
    if (sizes.empty()) expected.push_back({width, height, 32, width >= 256 ? 1 : 0});
    for (std::int32_t i = 0; i < width * height; ++i) {
        std::uint8_t* pixel = sheet.BitsPointer() + std::ptrdiff_t{4} * i;
        const unsigned alpha = byte();
        for (int c = 0; c < 3; ++c)
            pixel[c] = static_cast<std::uint8_t>((byte() + static_cast<unsigned>(i)) % 256 * alpha / 255);
        pixel[3] = static_cast<std::uint8_t>(alpha);
    }
    sheet.Alpha(AlphaComplex);
    ByteArray file;
    const std::int32_t count = sheet.SaveToStream_ICO(file, {}, sizes);
    require(count == (isRefused ? 0 : static_cast<std::int32_t>(expected.size())));
    if (count == 0) return 0;
    cPixSheet again;
    require(again.LoadPicture_Stream(file, 0, 0, 0, 0, true));
    std::vector<IconSourceSize> found;
    require(again.SourceIconSizes(found) == count && found == expected);
    for (std::size_t i = 0; i < found.size(); ++i) {
        const IconSourceSize& entry = found[i];
        // Of equal entries the first is read, and PNG images of every depth say that they have 32 bits.
        if (sizes.empty() || entry.Width != width || entry.Height != height || std::ranges::count(found, entry) > 1)
            continue;
        require(again.LoadPicture_Stream(file, width, height, 0, 0, false, entry.bitDepth));
        require(again.Width() == width && again.Height() == height);
        for (std::ptrdiff_t at = 0; at < std::ptrdiff_t{4} * width * height; at += 4)
            comparePixel(sheet.BitsPointer() + at, again.BitsPointer() + at, entry.isPNG != 0, askedDepths[i]);
    }
    return 0;
}
