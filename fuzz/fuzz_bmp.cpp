// BMP from an array: a picture of whole pixels, or none and nothing left behind; never a store that the data cannot
// fill. What loads is written and read again as the same picture.
#include "surface/cPixSheet.h"
#include <algorithm>
#include <cstdlib>
#include <vector>

using namespace pixkit;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    cPixSheet sheet;
    const bool loaded = sheet.LoadPicture_Stream(ByteArray(std::vector<std::uint8_t>(data, data + bytes)));
    if (loaded != (sheet.Handle() != 0)) std::abort();
    const eImageFormat type = sheet.ImageType();
    if (type != imgBitmap && type != imgBmpARGB && type != imgBmpPARGB) return 0; // none, or another reader's
    const auto pixels = static_cast<std::size_t>(sheet.Width()) * static_cast<std::size_t>(sheet.Height());
    if (pixels > bytes * 128) std::abort(); // runs of 255 pixels in two bytes fill most

    ByteArray written;
    cPixSheet again;
    if (!sheet.SaveToStream_Bitmap(written, true) || !again.LoadPicture_Stream(written)) std::abort();
    if (again.Width() != sheet.Width() || again.Height() != sheet.Height() || again.Alpha() != sheet.Alpha()) {
        std::abort();
    }
    if (!std::equal(sheet.BitsPointer(), sheet.BitsPointer() + pixels * 4, again.BitsPointer())) std::abort();
    return 0;
}
