// Pictures made of the input's bytes are written as JPEG, and libjpeg must read each without a warning.
#include "oracle/libjpegVerdict.h"
#include "surface/cPixSheet.h"
#include <cstdlib>

using namespace pixkit;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    if (bytes < 4) return 0;
    const std::int32_t width = 1 + data[0] % 80;
    const std::int32_t height = 1 + data[1] % 80;
    const std::int32_t quality = data[2];
    const bool isGray = (data[3] & 1) != 0;
    const bool isOpaque = (data[3] & 2) != 0;
    cPixSheet sheet;
    if (!sheet.InitializeDIB(width, height)) std::abort();
    std::size_t next = 4;
    for (std::int32_t i = 0; i < width * height; ++i) {
        std::uint8_t* pixel = sheet.BitsPointer() + std::ptrdiff_t{4} * i;
        for (int channel = 0; channel < 4; ++channel) {
            // The input again and again, a little different each time.
            if (bytes > 4) pixel[channel] = static_cast<std::uint8_t>(data[next] + i / 64);
            next = next + 1 < bytes ? next + 1 : 4;
        }
        if (isGray) pixel[1] = pixel[2] = pixel[0];
        if (isOpaque) pixel[3] = 255;
    }
    ByteArray file;
    if (!sheet.SaveToStream_JPG(file, quality)) std::abort();
    const test::JpegPicture decoded = test::decodeJpeg(file.data(), file.size());
    if (decoded.warnings != 0 || decoded.width != static_cast<std::uint32_t>(width) ||
        decoded.height != static_cast<std::uint32_t>(height)) {
        std::abort();
    }
    return 0;
}
