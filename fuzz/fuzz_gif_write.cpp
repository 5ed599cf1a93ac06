// Pictures written as GIF: giflib must read each, clear where they are and nowhere else.
#include "oracle/giflibVerdict.h"
#include "targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    Input input(data, bytes);
    const std::uint8_t tolerance = input.byte();
    const bool isAdaptive = input.byte() % 2 != 0;
    cPixSheet sheet;
    input.fill(sheet, 120);
    ByteArray file;
    require(sheet.SaveToStream_GIF(file, isAdaptive, tolerance));
    const test::GifDecoded decoded = test::decodeGif(file.data(), file.size());
    require(decoded.isWhole && decoded.width == sheet.Width() && decoded.pixels.size() == pixelCount(sheet));
    const auto width = static_cast<std::size_t>(sheet.Width()), last = static_cast<std::size_t>(sheet.Height()) - 1;
    for (std::size_t i = 0; i < decoded.pixels.size(); ++i) {
        const std::uint8_t alpha = sheet.BitsPointer()[((last - i / width) * width + i % width) * 4 + 3];
        require((decoded.pixels[i][3] == 0) == (sheet.Alpha() != AlphaNone && alpha < tolerance));
    }
    return 0;
}
