// Decoding GIF files, made from the pictures of the corpus by giflib, against giflib row by row with a conversion into
// our form (B, G, R, A, rows bottom-up) and stb_image, which gives R, G, B, A from the top.
#include "reading.h"
#include <cstring>
#include <gif_lib.h>
#include <memory>

namespace {

using bench::Bytes;
using pixkit::cPixSheet;

void check(bool done, const char* what) {
    if (!done) throw std::runtime_error(what);
}

// Three bits of red and green and two of blue; with `dithered` the thresholds of a 4 x 4 matrix decide what is rounded
// up, as palettes of photographs are made.
std::uint8_t indexOf(const std::uint8_t* bgra, std::int32_t x, std::int32_t y, bool dithered) {
    constexpr int thresholds[16] = {0, 8, 2, 10, 12, 4, 14, 6, 3, 11, 1, 9, 15, 7, 13, 5};
    const int threshold = dithered ? thresholds[(y & 3) * 4 + (x & 3)] : 8;
    const auto level = [&](int value, int greatest) { return (value * greatest * 16 / 255 + threshold) / 16; };
    const auto held = [](int value, int greatest) { return value < greatest ? value : greatest; };
    return static_cast<std::uint8_t>(held(level(bgra[2], 7), 7) << 5 | held(level(bgra[1], 7), 7) << 2 |
                                     held(level(bgra[0], 3), 3));
}

Bytes gifOf(const cPixSheet& sheet, bool dithered, bool interlaced, bool transparent) {
    GifColorType colors[256];
    for (int i = 0; i < 256; ++i)
        colors[i] = {static_cast<GifByteType>((i >> 5) * 255 / 7), static_cast<GifByteType>((i >> 2 & 7) * 255 / 7),
                     static_cast<GifByteType>((i & 3) * 255 / 3)};
    Bytes file;
    int error = 0;
    GifFileType* const gif = EGifOpen(
        &file,
        [](GifFileType* g, const GifByteType* bytes, int count) {
            auto& target = *static_cast<Bytes*>(g->UserData);
            target.insert(target.end(), bytes, bytes + count);
            return count;
        },
        &error);
    check(gif != nullptr, "giflib does not open");
    EGifSetGifVersion(gif, true);
    ColorMapObject* const map = GifMakeMapObject(256, colors);
    check(EGifPutScreenDesc(gif, sheet.Width(), sheet.Height(), 8, 0, map) == GIF_OK, "screen");
    if (transparent) {
        const GifByteType control[4] = {1, 0, 0, 0xFF};
        check(EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, control) == GIF_OK, "extension");
    }
    check(EGifPutImageDesc(gif, 0, 0, sheet.Width(), sheet.Height(), interlaced, nullptr) == GIF_OK, "image");
    constexpr int first[] = {0, 4, 2, 1};
    constexpr int step[] = {8, 8, 4, 2};
    Bytes row(static_cast<std::size_t>(sheet.Width()));
    for (int pass = 0; pass < (interlaced ? 4 : 1); ++pass)
        for (int y = first[pass]; y < sheet.Height(); y += interlaced ? step[pass] : 1) {
            const std::uint8_t* const pixels =
                sheet.BitsPointer() + static_cast<std::ptrdiff_t>(sheet.Height() - 1 - y) * sheet.scanWidth();
            for (int x = 0; x < sheet.Width(); ++x)
                row[static_cast<std::size_t>(x)] = indexOf(pixels + x * 4, x, y, dithered);
            check(EGifPutLine(gif, row.data(), sheet.Width()) == GIF_OK, "line");
        }
    GifFreeMapObject(map);
    check(EGifCloseFile(gif, &error) == GIF_OK, "giflib does not close");
    return file;
}

Bytes gifOfPicture(const cPixSheet& sheet, const std::string& name) {
    const bool photo = name.find("draw") == std::string::npos && name.find("clip") == std::string::npos;
    return gifOf(sheet, photo, name.starts_with("ilace"), !photo);
}

// The colours of an image as pixels, the transparent one all 0.
std::vector<std::uint32_t> pixelsOf(const GifFileType& gif, int transparent) {
    const ColorMapObject* const map = gif.Image.ColorMap != nullptr ? gif.Image.ColorMap : gif.SColorMap;
    check(map != nullptr, "no colours");
    std::vector<std::uint32_t> pixels(256);
    for (int i = 0; i < map->ColorCount; ++i)
        if (i != transparent)
            pixels[static_cast<std::size_t>(i)] = 0xFF000000U | static_cast<std::uint32_t>(map->Colors[i].Red << 16) |
                                                  static_cast<std::uint32_t>(map->Colors[i].Green << 8) |
                                                  map->Colors[i].Blue;
    return pixels;
}

void readImage(GifFileType* gif, int transparent) {
    check(DGifGetImageDesc(gif) == GIF_OK, "image");
    const auto pixels = pixelsOf(*gif, transparent);
    const auto width = static_cast<std::size_t>(gif->Image.Width);
    const auto height = static_cast<std::size_t>(gif->Image.Height);
    const auto store = std::make_unique_for_overwrite<std::uint32_t[]>(width * height);
    Bytes row(width);
    constexpr std::size_t first[] = {0, 4, 2, 1};
    constexpr std::size_t step[] = {8, 8, 4, 2};
    const bool interlaced = gif->Image.Interlace;
    for (std::size_t pass = 0; pass < (interlaced ? 4 : 1); ++pass)
        for (std::size_t y = first[pass]; y < height; y += interlaced ? step[pass] : 1) {
            check(DGifGetLine(gif, row.data(), static_cast<int>(width)) == GIF_OK, "line");
            std::uint32_t* const target = store.get() + (height - 1 - y) * width;
            for (std::size_t x = 0; x < width; ++x)
                target[x] = pixels[row[x]];
        }
    benchmark::DoNotOptimize(store.get());
}

void decodeGiflib(const Bytes& file) {
    struct Source {
        const std::uint8_t* at;
        std::size_t left;
    } source{file.data(), file.size()};
    int error = 0;
    GifFileType* const gif = DGifOpen(
        &source,
        [](GifFileType* g, GifByteType* bytes, int count) {
            auto& from = *static_cast<Source*>(g->UserData);
            const std::size_t taken = std::min(from.left, static_cast<std::size_t>(count));
            std::memcpy(bytes, from.at, taken);
            from.at += taken;
            from.left -= taken;
            return static_cast<int>(taken);
        },
        &error);
    check(gif != nullptr, "giflib does not open");
    int transparent = -1;
    for (GifRecordType record{}; record != IMAGE_DESC_RECORD_TYPE;) {
        check(DGifGetRecordType(gif, &record) == GIF_OK, "record");
        if (record != EXTENSION_RECORD_TYPE) continue;
        int code = 0;
        GifByteType* block = nullptr;
        check(DGifGetExtension(gif, &code, &block) == GIF_OK, "extension");
        while (block != nullptr) {
            if (code == GRAPHICS_EXT_FUNC_CODE && (block[1] & 1) != 0) transparent = block[4];
            check(DGifGetExtensionNext(gif, &block) == GIF_OK, "extension");
        }
    }
    readImage(gif, transparent);
    DGifCloseFile(gif, &error);
}

} // namespace

int main(int argc, char** argv) {
    static const auto pictures = bench::codedPictures(gifOfPicture);
    if (pictures.empty()) return bench::noPictures();
    for (const bench::CodedPicture& picture : pictures) {
        addReading("gif/" + picture.name + "/pixkit", picture, bench::decodeOurs);
        addReading("gif/" + picture.name + "/giflib", picture, decodeGiflib);
        addReading("gif/" + picture.name + "/stb_image", picture, bench::decodeStbAlone);
    }
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
