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

// As it was, ten times over; of large pictures twice.
template <class Save>
void requireKept(const cPixSheet& sheet, Save save) {
    cPixSheet copy;
    ByteArray file;
    const int generations = pixelCount(sheet) < 2000 ? 10 : 2;
    for (int generation = 0; generation < generations; ++generation) {
        require(save(generation == 0 ? sheet : copy, file));
        requireReadAgain(copy, file, sheet);
        require(std::ranges::equal(pixels(copy), pixels(sheet)));
        copy.Alpha(sheet.Alpha());
    }
}

void writePng(cPixSheet& sheet, Input& input) {
    for (int properties = input.byte() % 8; properties > 0; --properties) {
        const auto property = static_cast<ePngProperties>(input.byte() % 20);
        const std::uint8_t kind = input.byte(), value = input.byte();
        std::string text(value % 90, ' ');
        std::ranges::generate(text, [&] { return static_cast<char>(input.byte()); });
        const PngValue values[] = {text, value % 12, value * 0x10203, value * 300.37};
        sheet.PngPropertySet(property, values[kind % 4], kind < 128 ? text : "Keyword");
    }
    requireKept(sheet, [](const cPixSheet& copy, ByteArray& file) { return copy.SaveToStream_PNG(file); });
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

// As they were; but alpha that is 0 everywhere says nothing in these files, and straight colours need a clear pixel to
// be known for sure, which those that are not dark do without.
void writeBmpAndTga(const cPixSheet& sheet, Input& input) {
    const std::uint8_t options = input.byte();
    const bool asStored = (options & 1) != 0,
               isClear = std::ranges::count(pixels(sheet), 0) == std::ssize(pixels(sheet));
    for (const bool isTga : {false, true}) {
        const auto save = [&, fill = input.number()](const cPixSheet& from, ByteArray& file) {
            return isTga ? from.SaveToStream_TGA(file, (options & 2) != 0, (options & 4) != 0, asStored)
                         : from.SaveToStream_Bitmap(file, asStored, fill);
        };
        bool isAnyClear = false;
        for (std::size_t at = 3; at < pixels(sheet).size(); at += 4)
            isAnyClear |= pixels(sheet)[at] == 0;
        cPixSheet back;
        ByteArray file;
        require(save(sheet, file));
        requireReadAgain(back, file, sheet);
        if (sheet.Alpha() == AlphaNone || (!isClear && (asStored || (isTga && isAnyClear)))) requireKept(sheet, save);
    }
}

// An image of the picture's own size and depth is the picture; those of any come back with their size and depth.
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
    requireKept(sheet, [](const cPixSheet& copy, ByteArray& icon) { return copy.SaveToStream_ICO(icon) == 1; });
    cPixSheet again;
    ByteArray file;
    require(static_cast<std::size_t>(sheet.SaveToStream_ICO(file, {}, sizes)) == sizes.size() && load(again, file, 0));
    require(again.SourceIconSizes(found) != 0 && found.size() == expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) // of 32 bits a PNG image may be, if that alone keeps it
        if (expected[i].bitDepth == 32) expected[i].isPNG = found[i].isPNG;
    require(found == expected);
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
// SPDX-License-Identifier: MIT
