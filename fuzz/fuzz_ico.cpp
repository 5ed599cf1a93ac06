// Icons and cursors from an array, several requests each: a picture or none, of one of the sizes that the file is said
// to have, and never a store that the data cannot fill.
#include "surface/cPixSheet.h"
#include <algorithm>
#include <cstdlib>
#include <vector>

using namespace pixkit;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    if (bytes < 4 || data[0] != 0 || data[1] != 0 || data[3] != 0) return -1; // nothing for this reader
    const ByteArray file(std::vector<std::uint8_t>(data, data + bytes));
    cPixSheet sheet;
    for (const std::int32_t size : {0, 16, 200}) {
        const bool loaded = sheet.LoadPicture_Stream(file, size, size, 0, 0, true, size / 2);
        if (loaded != (sheet.Handle() != 0)) std::abort();
        std::vector<IconSourceSize> sizes;
        const std::int32_t count = sheet.SourceIconSizes(sizes);
        const eImageFormat type = sheet.ImageType();
        const bool isIcon =
            type == imgIcon || type == imgCursor || type == imgIconARGB || type == imgCursorARGB || type == imgPNGicon;
        if ((count != 0) != isIcon || static_cast<std::size_t>(count) != sizes.size()) std::abort();
        if (!isIcon) continue;
        const auto isThis = [&](const IconSourceSize& s) {
            return s.Width == sheet.Width() && s.Height == sheet.Height() && (s.isPNG != 0) == (type == imgPNGicon);
        };
        if (type != imgPNGicon) {
            if (std::ranges::none_of(sizes, isThis)) std::abort();
            const auto pixels = static_cast<std::size_t>(sheet.Width()) * static_cast<std::size_t>(sheet.Height());
            if (pixels > bytes * 8) std::abort();
        }
        const bool hasAlpha = sheet.Alpha() == AlphaComplex;
        if (hasAlpha && (type == imgIcon || type == imgCursor)) std::abort();
    }
    return 0;
}
