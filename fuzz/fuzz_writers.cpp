// Pictures made of the input, saved in every format with any options, and read again: by the readers here, where they
// are promised to be what they were, and by the libraries of others.
#include "support/MemoryClipboard.h"
#include "targets.h"
#ifdef PIXKIT_FUZZ_PEERS
#include "oracle/giflibVerdict.h"
#include "oracle/libjpegVerdict.h"
#endif

namespace {

void requireReadAgain(cPixSheet& read, const ByteArray& file, const cPixSheet& sheet) {
    require(load(read, file, 0));
    require(read.Width() == sheet.Width() && read.Height() == sheet.Height());
}

// By the rule of straight colours.
void writePng(cPixSheet& sheet, Input& input) {
    for (int properties = input.byte() % 8; properties > 0; --properties) {
        const auto property = static_cast<ePngProperties>(input.byte() % 20);
        const std::uint8_t kind = input.byte(), value = input.byte();
        std::string text(value % 90, ' ');
        std::ranges::generate(text, [&] { return static_cast<char>(input.byte()); });
        const PngValue values[] = {text, value % 12, value * 0x10203, value * 300.37};
        sheet.PngPropertySet(property, values[kind % 4], kind < 128 ? text : "Keyword");
    }
    cPixSheet back;
    ByteArray file;
    require(sheet.SaveToStream_PNG(file));
    requireReadAgain(back, file, sheet);
    for (std::size_t at = 0; at < pixelCount(sheet) * 4; ++at) {
        const unsigned stored = pixels(sheet)[at], alpha = pixels(sheet)[at | 3];
        require(pixels(back)[at] == (at % 4 == 3 ? alpha : alpha == 0 ? 0 : stored * 255U / alpha * alpha / 255));
    }
}

// Clear where they are and nowhere else.
void writeGif(const cPixSheet& sheet, Input& input) {
    const std::uint8_t tolerance = input.byte();
    cPixSheet back;
    ByteArray file;
    require(sheet.SaveToStream_GIF(file, input.byte() % 2 != 0, tolerance));
    requireReadAgain(back, file, sheet);
    for (std::size_t at = 3; at < pixelCount(sheet) * 4; at += 4)
        require((pixels(back)[at] == 0) == (sheet.Alpha() != AlphaNone && pixels(sheet)[at] < tolerance));
#ifdef PIXKIT_FUZZ_PEERS
    const test::GifDecoded decoded = test::decodeGif(file.data(), file.size());
    require(decoded.isWhole && decoded.pixels.size() == pixelCount(sheet));
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

// As they were, but for colours that become straight; alpha that is 0 everywhere says nothing in these files.
void writeBmpAndTga(const cPixSheet& sheet, Input& input) {
    const std::uint8_t options = input.byte();
    const bool asStored = (options & 1) != 0,
               isClear = std::ranges::count(pixels(sheet), 0) == std::ssize(pixels(sheet));
    for (const bool isTga : {false, true}) {
        cPixSheet back;
        ByteArray file;
        require(isTga ? sheet.SaveToStream_TGA(file, (options & 2) != 0, (options & 4) != 0, asStored)
                      : sheet.SaveToStream_Bitmap(file, asStored, input.number()));
        requireReadAgain(back, file, sheet);
        if (sheet.Alpha() == AlphaNone || (asStored && !isClear))
            require(std::ranges::equal(pixels(sheet), pixels(back)));
    }
}

// Icons of any sizes and depths: every entry comes back with its size and depth.
void writeIco(const cPixSheet& sheet, Input& input) {
    constexpr std::pair<std::int32_t, std::int32_t> depths[] = {
        {1, 1}, {4, 4}, {8, 8}, {24, 24}, {32, 32}, {HIGH_COLOR, 24}, {TRUE_COLOR, 24}, {TRUE_COLOR_ALPHA, 32}};
    std::vector<IconEntrySize> sizes;
    std::vector<IconSourceSize> expected, found;
    for (int count = 1 + input.byte() % 3; count > 0; --count) {
        const auto [asked, stored] = depths[input.byte() % std::size(depths)];
        sizes.push_back(
            {input.byte() % 8 == 0 ? 250 + input.byte() % 12 : 1 + input.byte() % 80, 1 + input.byte() % 60, asked});
        const bool isPng = sizes.back().Width >= 256;
        expected.push_back({sizes.back().Width, sizes.back().Height, isPng ? 32 : stored, isPng ? 1 : 0});
    }
    cPixSheet again;
    ByteArray file;
    require(static_cast<std::size_t>(sheet.SaveToStream_ICO(file, {}, sizes)) == sizes.size() && load(again, file, 0));
    require(again.SourceIconSizes(found) != 0 && found == expected);
    for (const IconSourceSize& size : found) {
        require(again.LoadPicture_Stream(file, size.Width, size.Height, 0, 0, false, size.bitDepth));
        require(again.Width() == size.Width && again.Height() == size.Height);
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
    const std::uint8_t kind = input.byte();
    cPixSheet sheet;
    require(
        input.fill(sheet, kind >= 240 ? 500 : 60)); // wide enough at times for more pixels than a palette is tried on
    const std::vector<std::uint8_t> before(pixels(sheet).begin(), pixels(sheet).end());
    if (kind % 6 == 0) writePng(sheet, input);
    if (kind % 6 == 1) writeGif(sheet, input);
    if (kind % 6 == 2) writeJpg(sheet, input);
    if (kind % 6 == 3) writeBmpAndTga(sheet, input);
    if (kind % 6 == 4) writeIco(sheet, input);
    if (kind % 6 == 5) writeClipboard(sheet);
    require(std::ranges::equal(pixels(sheet), before));
    return 0;
}
