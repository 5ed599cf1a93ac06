// Pictures written as JPEG: libjpeg must read each without a warning.
#include "oracle/libjpegVerdict.h"
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    Input input(data, bytes);
    const std::int32_t quality = input.byte();
    cPixSheet sheet;
    input.fill(sheet, 80);
    ByteArray file;
    require(sheet.SaveToStream_JPG(file, quality));
    const test::JpegPicture decoded = test::decodeJpeg(file.data(), file.size());
    require(decoded.warnings == 0 && decoded.pixels.size() == pixelCount(sheet));
    require(decoded.width == static_cast<std::uint32_t>(sheet.Width()));
    return 0;
}
