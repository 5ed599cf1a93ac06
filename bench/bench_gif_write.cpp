// Writing whole GIF files to memory: the component, and giflib's own quantising and coding, with what comes out: bytes,
// and how near the picture is (PSNR in decibels over B, G and R).
#include "oracle/giflibVerdict.h"
#include "writing.h"
#include <stdexcept>

namespace {

using bench::Bytes;

struct Picture : bench::SourcePicture {
    Bytes planes[3]; // R, G, B, top row first, as giflib wants them
};

template <bool isAdaptive>
void writeWithPixkit(const Picture& picture, Bytes& out) {
    pixkit::ByteArray stream;
    if (!picture.sheet.SaveToStream_GIF(stream, isAdaptive)) throw std::runtime_error("not saved");
    out.assign(stream.data(), stream.data() + stream.size());
}

void writeWithGiflib(const Picture& picture, Bytes& out) {
    const int width = picture.sheet.Width(), height = picture.sheet.Height();
    int colors = 256, error = 0;
    Bytes indexes(picture.planes[0].size());
    ColorMapObject* map = GifMakeMapObject(256, nullptr);
    const auto plane = [&](std::size_t i) { return const_cast<GifByteType*>(picture.planes[i].data()); }; // only read
    GifQuantizeBuffer(static_cast<unsigned>(width), static_cast<unsigned>(height), &colors, plane(0), plane(1),
                      plane(2), indexes.data(), map->Colors);
    out.clear();
    const auto write = [](GifFileType* file, const GifByteType* bytes, int count) {
        auto& target = *static_cast<Bytes*>(file->UserData);
        target.insert(target.end(), bytes, bytes + count);
        return count;
    };
    GifFileType* file = EGifOpen(&out, write, &error);
    EGifPutScreenDesc(file, width, height, 8, 0, map);
    EGifPutImageDesc(file, 0, 0, width, height, false, nullptr);
    for (int y = 0; y < height; ++y)
        EGifPutLine(file, indexes.data() + std::ptrdiff_t{y} * width, width);
    EGifCloseFile(file, &error);
    GifFreeMapObject(map);
}

} // namespace

int main(int argc, char** argv) {
    static const auto pictures = bench::sourcePictures<Picture>({"photo_rgb", "wall_rgb", "ilace_rgb", "pal_photo"});
    if (pictures.empty()) return bench::noPictures();
    for (const auto& picture : pictures) {
        for (std::size_t i = 0; i < picture->pixels(); ++i)
            for (std::size_t channel = 0; channel < 3; ++channel)
                picture->planes[channel].push_back(picture->pixelFromTop(i)[2 - channel]);
        const std::string name = "gif-write/" + picture->name + "/";
        addWriting(name + "pixkit", *picture, writeWithPixkit<true>, pixkit::test::decodeGif);
        addWriting(name + "web-safe-pixkit", *picture, writeWithPixkit<false>, pixkit::test::decodeGif);
        addWriting(name + "giflib", *picture, writeWithGiflib, pixkit::test::decodeGif);
    }
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
