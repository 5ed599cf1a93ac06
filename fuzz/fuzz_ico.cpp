// Icons and cursors, several requests each: a picture of one of the sizes that the file is said to have, and never a
// store that the data cannot fill.
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    if (bytes < 4 || data[0] != 0 || data[1] != 0 || data[3] != 0) return -1; // nothing for this reader
    cPixSheet sheet;
    for (const std::int32_t size : {0, 16, 200}) {
        load(sheet, arrayOf(data, bytes), size, size / 2);
        std::vector<IconSourceSize> sizes;
        require(static_cast<std::size_t>(sheet.SourceIconSizes(sizes)) == sizes.size());
        const eImageFormat type = sheet.ImageType();
        const bool isPng = type == imgPNGicon;
        const bool isIcon = type == imgIcon || type == imgCursor || type == imgIconARGB || type == imgCursorARGB;
        require(sizes.empty() != (isIcon || isPng));
        if (!isIcon) continue;
        require(std::ranges::any_of(sizes, [&](const IconSourceSize& s) {
            return s.Width == sheet.Width() && s.Height == sheet.Height() && s.isPNG == 0;
        }));
        require(pixelCount(sheet) <= bytes * 8);
        require(sheet.Alpha() != AlphaComplex || type == imgIconARGB || type == imgCursorARGB);
    }
    return 0;
}
