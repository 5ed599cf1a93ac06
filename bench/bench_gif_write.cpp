// Writing whole GIF files to memory: the component; giflib's own quantising and coding; and libimagequant's, at its
// default speed with and without its diffusion and at its quickest, coded by giflib; with what comes out: bytes, and
// how near the picture is (PSNR in decibels over B, G and R). Then the coding alone, of the same indexes.
#include "coding/lzw/LzwEncoder.h"
#include "oracle/giflibVerdict.h"
#include "writing.h"
#include <libimagequant.h>
#include <stdexcept>

namespace {

using bench::Bytes;

struct Picture : bench::SourcePicture {
    Bytes planes[3]; // R, G, B, top row first, as giflib wants them
    Bytes rgba;      // the same for libimagequant
};

template <bool isAdaptive>
void writeWithPixkit(const Picture& picture, Bytes& out) {
    pixkit::ByteArray stream;
    if (!picture.sheet.SaveToStream_GIF(stream, isAdaptive)) throw std::runtime_error("not saved");
    out.assign(stream.data(), stream.data() + stream.size());
}

using ColorMap = std::unique_ptr<ColorMapObject, decltype(&GifFreeMapObject)>;

ColorMap newColorMap() {
    return {GifMakeMapObject(256, nullptr), GifFreeMapObject};
}

Bytes quantizedByGiflib(const Picture& picture, ColorMapObject& map) {
    int colors = 256;
    Bytes indexes(picture.pixels());
    const auto plane = [&](std::size_t i) { return const_cast<GifByteType*>(picture.planes[i].data()); }; // only read
    GifQuantizeBuffer(static_cast<unsigned>(picture.sheet.Width()), static_cast<unsigned>(picture.sheet.Height()),
                      &colors, plane(0), plane(1), plane(2), indexes.data(), map.Colors);
    return indexes;
}

void codeWithGiflib(const Picture& picture, Bytes& indexes, const ColorMapObject& map, Bytes& out) {
    const int width = picture.sheet.Width(), height = picture.sheet.Height();
    int error = 0;
    out.clear();
    const auto write = [](GifFileType* file, const GifByteType* bytes, int count) {
        auto& target = *static_cast<Bytes*>(file->UserData);
        target.insert(target.end(), bytes, bytes + count);
        return count;
    };
    GifFileType* file = EGifOpen(&out, write, &error);
    EGifPutScreenDesc(file, width, height, 8, 0, &map);
    EGifPutImageDesc(file, 0, 0, width, height, false, nullptr);
    for (int y = 0; y < height; ++y)
        EGifPutLine(file, indexes.data() + std::ptrdiff_t{y} * width, width);
    EGifCloseFile(file, &error);
}

void writeWithGiflib(const Picture& picture, Bytes& out) {
    const ColorMap map = newColorMap();
    Bytes indexes = quantizedByGiflib(picture, *map);
    codeWithGiflib(picture, indexes, *map, out);
}

void writeWithImagequant(const Picture& picture, Bytes& out, int speed, float diffusion) {
    const int width = picture.sheet.Width(), height = picture.sheet.Height();
    liq_attr* const options = liq_attr_create();
    liq_set_speed(options, speed);
    liq_image* const image = liq_image_create_rgba(options, picture.rgba.data(), width, height, 0);
    liq_result* result = nullptr;
    if (liq_image_quantize(image, options, &result) != LIQ_OK) throw std::runtime_error("not quantized");
    liq_set_dithering_level(result, diffusion);
    Bytes indexes(picture.pixels());
    liq_write_remapped_image(result, image, indexes.data(), indexes.size());
    const ColorMap map = newColorMap();
    const liq_palette& palette = *liq_get_palette(result);
    for (unsigned i = 0; i < palette.count; ++i)
        map->Colors[i] = {palette.entries[i].r, palette.entries[i].g, palette.entries[i].b};
    codeWithGiflib(picture, indexes, *map, out);
    liq_result_destroy(result);
    liq_image_destroy(image);
    liq_attr_destroy(options);
}

// `code` codes the indexes that giflib makes of the picture.
template <class Code>
void addCoding(const std::string& name, const Picture& picture, Code code) {
    bench::add(name, [&picture, code](benchmark::State& state) {
        const ColorMap map = newColorMap();
        Bytes indexes = quantizedByGiflib(picture, *map), out;
        for (auto _ : state)
            code(indexes, *map, out);
        bench::countPixels(state, static_cast<double>(picture.pixels()));
        state.counters["bytes"] = static_cast<double>(out.size());
    });
}

} // namespace

int main(int argc, char** argv) {
    static const auto pictures = bench::sourcePictures<Picture>({"photo_rgb", "wall_rgb", "ilace_rgb", "pal_photo"});
    if (pictures.empty()) return bench::noPictures();
    for (const auto& picture : pictures) {
        for (std::size_t i = 0; i < picture->pixels(); ++i)
            for (std::size_t channel = 0; channel < 3; ++channel)
                picture->planes[channel].push_back(picture->pixelFromTop(i)[2 - channel]);
        for (std::size_t i = 0; i < picture->pixels(); ++i)
            picture->rgba.insert(picture->rgba.end(),
                                 {picture->planes[0][i], picture->planes[1][i], picture->planes[2][i], 255});
        const std::string name = "gif-write/" + picture->name + "/";
        addWriting(name + "pixkit", *picture, writeWithPixkit<true>, pixkit::test::decodeGif);
        addWriting(name + "web-safe-pixkit", *picture, writeWithPixkit<false>, pixkit::test::decodeGif);
        addWriting(name + "giflib", *picture, writeWithGiflib, pixkit::test::decodeGif);
        const auto addImagequant = [&](const char* who, int speed, float diffusion) {
            addWriting(
                name + who, *picture,
                [=](const Picture& source, Bytes& out) { writeWithImagequant(source, out, speed, diffusion); },
                pixkit::test::decodeGif);
        };
        addImagequant("libimagequant", 4, 1);
        addImagequant("libimagequant plain", 4, 0);
        addImagequant("libimagequant quick", 10, 0);
        const std::string coding = "gif-code/" + picture->name + "/";
        addCoding(coding + "pixkit", *picture, [](Bytes& indexes, const ColorMapObject&, Bytes& out) {
            out.clear();
            pixkit::gifCompress(indexes, 8, out);
        });
        addCoding(coding + "giflib", *picture, [&picture](Bytes& indexes, const ColorMapObject& map, Bytes& out) {
            codeWithGiflib(*picture, indexes, map, out);
        });
    }
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
