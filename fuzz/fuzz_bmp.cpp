// BMP: never a store that the data cannot fill; what loads is written and read again as the same picture.
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    cPixSheet sheet, again;
    load(sheet, arrayOf(data, bytes));
    const eImageFormat type = sheet.ImageType();
    if (type != imgBitmap && type != imgBmpARGB && type != imgBmpPARGB) return 0; // none, or another reader's
    require(pixelCount(sheet) <= bytes * 128);                                    // runs of 255 in two bytes fill most
    ByteArray written;
    require(sheet.SaveToStream_Bitmap(written, true) && load(again, written));
    requireSame(sheet, again);
    return 0;
}
