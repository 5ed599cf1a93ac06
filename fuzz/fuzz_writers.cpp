// Pictures made of the input, saved in every format with any options, and read again: by the readers here, where they
// are promised to be what they were, and by the libraries of others.
#include "platform/faults.h"
#include "support/MemoryClipboard.h"
#include "targets.h"
#include <numeric>
#ifdef PIXKIT_FUZZ_PEERS
#include "oracle/giflibVerdict.h"
#include "oracle/libjpegVerdict.h"
#endif

namespace {

void requireSize(const cPixSheet& read, const cPixSheet& sheet) {
    require(read.Width() == sheet.Width() && read.Height() == sheet.Height());
}

// Whether files say which pixels are clear: of alpha that is 0 everywhere they do not.
bool showsAlpha(const cPixSheet& sheet) {
    const auto bytes = pixels(sheet);
    std::uint8_t most = 0;
    for (std::size_t at = 3; at < bytes.size(); at += 4)
        most = std::max(most, bytes[at]);
    return most != 0;
}

// By the rule of straight colours.
void writePng(cPixSheet& sheet, Input& input, const std::string& text) {
    const std::uint8_t form = input.byte(), which = input.byte(), value = input.byte();
    sheet.PngPropertySet(pngFilterMethod, form % 8);
    sheet.PngPropertySet(pngCompressionLevel, form / 8 % 10);
    sheet.PngPropertySet(pngInterlaced, which & 1);
    if ((which & 2) != 0) sheet.PngPropertySet(pngBackgroundColor, value * 0x10203);
    if ((which & 4) != 0) sheet.PngPropertySet(pngPixelsPerMeterX, value);
    if ((which & 8) != 0) sheet.PngPropertySet(pngLastModified, value * 300.37);
    if ((which & 16) != 0) sheet.PngPropertySet(pngComment, text);
    if ((which & 32) != 0) sheet.PngPropertySet(pngText, text, text.substr(0, value));
    if ((which & 64) != 0) sheet.PngPropertySet(pngLastModified, text);
    cPixSheet back;
    ByteArray file;
    require(sheet.SaveToStream_PNG(file) && load(back, file));
    requireSize(back, sheet);
    for (std::size_t at = 0; at < pixelCount(sheet) * 4; at += 4) {
        const std::uint8_t *const stored = sheet.BitsPointer() + at, *const read = back.BitsPointer() + at;
        const unsigned alpha = stored[3];
        require(read[3] == alpha);
        for (int c = 0; c < 3; ++c)
            require(read[c] == (alpha == 0 ? 0 : stored[c] * 255U / alpha * alpha / 255));
    }
}

// Clear where they are and nowhere else.
void writeGif(const cPixSheet& sheet, Input& input) {
    const std::uint8_t tolerance = input.byte();
    cPixSheet back;
    ByteArray file;
    require(sheet.SaveToStream_GIF(file, input.byte() % 2 != 0, tolerance) && load(back, file));
    requireSize(back, sheet);
    for (std::size_t at = 3; at < pixelCount(sheet) * 4; at += 4)
        require((back.BitsPointer()[at] == 0) == (sheet.Alpha() != AlphaNone && sheet.BitsPointer()[at] < tolerance));
#ifdef PIXKIT_FUZZ_PEERS
    const test::GifDecoded decoded = test::decodeGif(file.data(), file.size());
    require(decoded.isWhole && decoded.width == sheet.Width() && decoded.pixels.size() == pixelCount(sheet));
    const auto width = static_cast<std::size_t>(sheet.Width()), last = static_cast<std::size_t>(sheet.Height()) - 1;
    for (std::size_t i = 0; i < decoded.pixels.size(); ++i)
        require(std::ranges::equal(decoded.pixels[i],
                                   pixels(back).subspan(((last - i / width) * width + i % width) * 4, 4)));
#endif
}

void writeJpg(const cPixSheet& sheet, Input& input) {
    ByteArray file;
    require(sheet.SaveToStream_JPG(file, input.byte()));
#ifdef PIXKIT_FUZZ_PEERS
    const test::JpegPicture decoded = test::decodeJpeg(file.data(), file.size());
    require(decoded.warnings == 0 && decoded.pixels.size() == pixelCount(sheet));
    require(decoded.width == static_cast<std::uint32_t>(sheet.Width()));
#endif
}

void writeBmpAndTga(const cPixSheet& sheet, Input& input) {
    const std::uint8_t options = input.byte();
    const bool asStored = (options & 1) != 0, isExact = sheet.Alpha() == AlphaNone || (asStored && showsAlpha(sheet));
    cPixSheet back;
    ByteArray file;
    require(sheet.SaveToStream_Bitmap(file, asStored, input.number()) && load(back, file));
    requireSize(back, sheet);
    require(!isExact || std::ranges::equal(pixels(sheet), pixels(back)));
    require(sheet.SaveToStream_TGA(file, (options & 2) != 0, (options & 4) != 0, asStored) && load(back, file));
    requireSize(back, sheet);
    require(!isExact || std::ranges::equal(pixels(sheet), pixels(back)));
}

// Icons of any sizes and depths, sensible or not: every entry comes back with its size and depth.
void writeIco(const cPixSheet& sheet, Input& input) {
    constexpr std::int32_t depths[] = {1, 4, 8, 24, 32, HIGH_COLOR, TRUE_COLOR, TRUE_COLOR_ALPHA, 33, -7};
    constexpr std::int32_t stored[] = {1, 4, 8, 24, 32, 24, 24, 32};
    std::vector<IconEntrySize> sizes(input.byte() % 4U);
    bool isRefused = false;
    for (IconEntrySize& size : sizes) {
        const unsigned kind = input.byte() % 16U, depth = input.byte() % std::size(depths);
        size = {kind == 0  ? 250 + input.byte() % 12
                : kind < 4 ? 0
                           : input.byte() % 80 - (kind == 4),
                kind < 3 ? 0 : input.byte() % 60, depths[depth]};
        isRefused |= size.Width < 0 || depth >= std::size(stored);
    }
    cPixSheet again;
    ByteArray file;
    const auto count = static_cast<std::size_t>(sheet.SaveToStream_ICO(file, {}, sizes));
    require(count == (isRefused ? 0 : std::max<std::size_t>(1, sizes.size())));
    if (isRefused) return;
    require(load(again, file, 0));
    std::vector<IconSourceSize> found;
    require(static_cast<std::size_t>(again.SourceIconSizes(found)) == count);
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const std::int32_t width = sizes[i].Width == 0 ? sheet.Width() : sizes[i].Width;
        const std::int32_t height = sizes[i].Height == 0 ? sheet.Height() : sizes[i].Height;
        const bool isPng = width >= 256 || height >= 256;
        const std::int32_t depth = stored[std::ranges::find(depths, sizes[i].bitDepth) - depths];
        require(found[i] == IconSourceSize{width, height, isPng ? 32 : depth, isPng ? 1 : 0});
        require(again.LoadPicture_Stream(file, width, height, 0, 0, false, found[i].bitDepth));
        require(again.Width() == width && again.Height() == height);
    }
}

// Every byte of it.
void writeClipboard(const cPixSheet& sheet) {
    const test::MemoryClipboard clipboard;
    cPixSheet pasted;
    require(sheet.CopyToClipBoard() && pasted.LoadPicture_ClipBoard());
    requireSame(sheet, pasted);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t bytes) {
    Input input(data, bytes);
    cPixSheet sheet;
    const std::uint8_t kind = input.byte();
    require(
        input.fill(sheet, kind >= 240 ? 600 : 60)); // wide enough at times for more pixels than a palette is tried on
    const std::vector<std::uint8_t> before(pixels(sheet).begin(), pixels(sheet).end());
    switch (kind % 6) {
    case 0:
        writePng(sheet, input, {reinterpret_cast<const char*>(data), bytes});
        break;
    case 1:
        writeGif(sheet, input);
        break;
    case 2:
        writeJpg(sheet, input);
        break;
    case 3:
        writeBmpAndTga(sheet, input);
        break;
    case 4:
        writeIco(sheet, input);
        break;
    default:
        writeClipboard(sheet);
    }
    require(std::ranges::equal(pixels(sheet), before));
    return 0;
}
