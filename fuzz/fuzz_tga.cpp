// TGA: what loads is saved in every way, and read again as it was wherever nothing rounds.
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    cPixSheet sheet;
    load(sheet, arrayOf(data, bytes));
    if (sheet.ImageType() != imgTGA) return 0;
    for (unsigned options = 0; options < 8; ++options) {
        const bool asStored = (options & 4) != 0;
        ByteArray saved;
        cPixSheet again;
        require(sheet.SaveToStream_TGA(saved, (options & 1) != 0, (options & 2) != 0, asStored) && load(again, saved));
        if (asStored || sheet.Alpha() == AlphaNone) requireSame(sheet, again);
    }
    return 0;
}
