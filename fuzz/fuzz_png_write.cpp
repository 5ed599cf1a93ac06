// Pictures and properties written as PNG: what is read back is what was written, by the rule of straight colours.
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    Input input(data, bytes);
    cPixSheet sheet, back;
    const std::uint8_t form = input.byte(), which = input.byte(), value = input.byte();
    // Wide enough at times for more pixels than a palette is tried on.
    input.fill(sheet, (which & 128) != 0 ? 600 : 60);
    sheet.PngPropertySet(pngFilterMethod, form % 8);
    sheet.PngPropertySet(pngCompressionLevel, form / 8 % 10);
    sheet.PngPropertySet(pngInterlaced, which & 1);
    const std::string text(reinterpret_cast<const char*>(data), bytes);
    if ((which & 2) != 0) sheet.PngPropertySet(pngBackgroundColor, value * 0x10203);
    if ((which & 4) != 0) sheet.PngPropertySet(pngPixelsPerMeterX, value);
    if ((which & 8) != 0) sheet.PngPropertySet(pngLastModified, value * 300.37);
    if ((which & 16) != 0) sheet.PngPropertySet(pngComment, text);
    if ((which & 32) != 0) sheet.PngPropertySet(pngText, text, text.substr(0, value));
    if ((which & 64) != 0) sheet.PngPropertySet(pngLastModified, text);
    ByteArray file;
    require(sheet.SaveToStream_PNG(file) && load(back, file));
    require(back.Width() == sheet.Width() && back.Height() == sheet.Height());
    for (std::size_t at = 0; at < pixelCount(sheet) * 4; at += 4) {
        const std::uint8_t *const stored = sheet.BitsPointer() + at, *const read = back.BitsPointer() + at;
        const unsigned alpha = stored[3];
        require(read[3] == alpha);
        for (int c = 0; c < 3; ++c)
            require(read[c] == (alpha == 0 ? 0 : stored[c] * 255U / alpha * alpha / 255));
    }
    return 0;
}
