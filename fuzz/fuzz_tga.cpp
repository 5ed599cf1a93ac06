// TGA from an array; what loads is saved in every way, and read again as it was wherever nothing rounds.
#include "png_input.h"

using namespace pixkit;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    cPixSheet sheet;
    const bool loaded = sheet.LoadPicture_Stream(ByteArray(std::vector<std::uint8_t>(data, data + bytes)));
    if (loaded != (sheet.Handle() != 0)) std::abort();
    if (sheet.ImageType() != imgTGA) return 0;
    for (unsigned options = 0; options < 8; ++options) {
        const bool asPreMultiplied = (options & 4) != 0;
        ByteArray saved;
        cPixSheet again;
        if (!sheet.SaveToStream_TGA(saved, (options & 1) != 0, (options & 2) != 0, asPreMultiplied)) std::abort();
        if (!again.LoadPicture_Stream(saved)) std::abort();
        const bool isExact = asPreMultiplied || sheet.Alpha() == AlphaNone;
        if (isExact && !isSame(sheet, again)) std::abort();
    }
    return 0;
}
