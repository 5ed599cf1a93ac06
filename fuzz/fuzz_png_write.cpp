// Pictures and properties written as PNG: what is read back is what was written, by the rule of straight colours.
//
// Input: width, height, alpha kind, three bytes of properties, then bytes that become pixels (repeated where there are
// too few) and texts.
#include "surface/cPixSheet.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

using namespace pixkit;

static void fillPixels(cPixSheet& sheet, const std::uint8_t* data, std::size_t bytes, unsigned kind) {
    std::uint8_t* pixel = sheet.BitsPointer();
    const std::size_t count = static_cast<std::size_t>(sheet.Width()) * static_cast<std::size_t>(sheet.Height());
    std::size_t next = 0;
    const auto take = [&] { return bytes == 0 ? std::uint8_t{0} : data[next++ % bytes]; };
    for (std::size_t i = 0; i < count; ++i, pixel += 4) {
        const std::uint8_t alpha = kind % 4 == 0 ? 255 : kind % 4 == 1 ? (take() % 2 == 0 ? 0 : 255) : take();
        for (int channel = 0; channel < 3; ++channel) {
            const bool asFirst = channel > 0 && (kind & 4) != 0; // gray
            pixel[channel] = asFirst ? pixel[0] : static_cast<std::uint8_t>((kind & 8) != 0 ? take() & 0xF0 : take());
            if (pixel[channel] > alpha) pixel[channel] = alpha;
        }
        pixel[3] = alpha;
    }
    sheet.Alpha(kind % 4 == 0 ? AlphaNone : AlphaComplex);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    if (bytes < 6) return 0;
    cPixSheet sheet;
    // Wide enough at times for more pixels than a palette is tried on.
    const std::int32_t width = 1 + data[0] * ((data[5] & 1) != 0 ? 9 : 1);
    const std::int32_t height = 1 + data[1];
    if (!sheet.InitializeDIB(width, height)) return 0;
    fillPixels(sheet, data + 6, bytes - 6, data[2]);
    sheet.PngPropertySet(pngFilterMethod, data[3] % 8);
    sheet.PngPropertySet(pngCompressionLevel, data[3] / 8 % 10);
    sheet.PngPropertySet(pngInterlaced, data[4] & 1);
    if ((data[4] & 2) != 0) sheet.PngPropertySet(pngBackgroundColor, data[5] * 0x10203);
    if ((data[4] & 4) != 0) sheet.PngPropertySet(pngPixelsPerMeterX, data[5]);
    if ((data[4] & 8) != 0) sheet.PngPropertySet(pngLastModified, data[5] * 300.37);
    const std::string text(reinterpret_cast<const char*>(data + 6), bytes - 6);
    if ((data[4] & 16) != 0) sheet.PngPropertySet(pngComment, text);
    if ((data[4] & 32) != 0) sheet.PngPropertySet(pngText, text, text.substr(0, data[5]));
    if ((data[4] & 64) != 0) sheet.PngPropertySet(pngLastModified, text);

    ByteArray file;
    if (!sheet.SaveToStream_PNG(file)) std::abort();
    cPixSheet back;
    if (!back.LoadPicture_Stream(file)) std::abort();
    if (back.Width() != width || back.Height() != height) std::abort();
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* const stored = sheet.BitsPointer() + 4 * i;
        const std::uint8_t* const read = back.BitsPointer() + 4 * i;
        const unsigned alpha = stored[3];
        if (read[3] != alpha) std::abort();
        for (int channel = 0; channel < 3; ++channel) {
            const unsigned expected = alpha == 0 ? 0 : stored[channel] * 255U / alpha * alpha / 255;
            if (read[channel] != expected) std::abort();
        }
    }
    return 0;
}
