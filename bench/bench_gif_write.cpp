// Writing whole GIF files to memory: the component, and giflib's own quantising and coding, with what comes out: bytes,
// and how near the picture is (PSNR in decibels over B, G and R).
#include "oracle/giflibVerdict.h"
#include "pictures.h"
#include "surface/cPixSheet.h"
#include <benchmark/benchmark.h>
#include <cmath>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace {

using bench::Bytes;

struct Picture {
    std::string name;
    pixkit::cPixSheet sheet;
    Bytes planes[3]; // R, G, B, top row first, as giflib wants them

    const std::uint8_t* pixelFromTop(std::size_t i) const {
        const auto width = static_cast<std::size_t>(sheet.Width()), height = static_cast<std::size_t>(sheet.Height());
        return sheet.BitsPointer() + ((height - 1 - i / width) * width + i % width) * 4;
    }
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

double psnr(const Picture& picture, const Bytes& file) {
    const auto decoded = pixkit::test::decodeGif(file.data(), file.size());
    double squares = 0;
    for (std::size_t i = 0; i < decoded.pixels.size(); ++i) {
        const std::uint8_t* pixel = picture.pixelFromTop(i);
        for (std::size_t channel = 0; channel < 3; ++channel)
            squares += std::pow(pixel[channel] - decoded.pixels[i][channel], 2);
    }
    return 10 * std::log10(255.0 * 255.0 * 3 * static_cast<double>(decoded.pixels.size()) / squares);
}

void addBenchmark(const Picture& picture, const char* who, void (*write)(const Picture&, Bytes&)) {
    const std::string name = "gif-write/" + picture.name + "/" + who;
    benchmark::RegisterBenchmark(name.c_str(), [=, &picture](benchmark::State& state) {
        Bytes file;
        for (auto _ : state)
            write(picture, file);
        const double pixels = static_cast<double>(picture.sheet.Width()) * picture.sheet.Height();
        state.counters["Mpixel/s"] =
            benchmark::Counter(pixels * static_cast<double>(state.iterations()) / 1e6, benchmark::Counter::kIsRate);
        state.counters["bytes"] = static_cast<double>(file.size());
        state.counters["PSNR"] = psnr(picture, file);
    })->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv) {
    static std::vector<std::unique_ptr<Picture>> pictures;
    for (const char* name : {"photo_rgb", "wall_rgb", "ilace_rgb", "pal_photo"}) {
        auto picture = std::make_unique<Picture>();
        picture->name = name;
        if (!picture->sheet.LoadPicture_File((bench::corpusFolder() / (std::string(name) + ".png")).string())) continue;
        const auto count =
            static_cast<std::size_t>(picture->sheet.Width()) * static_cast<std::size_t>(picture->sheet.Height());
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t channel = 0; channel < 3; ++channel)
                picture->planes[channel].push_back(picture->pixelFromTop(i)[2 - channel]);
        }
        pictures.push_back(std::move(picture));
    }
    if (pictures.empty()) {
        std::cerr << "no pictures: run scripts/corpus.sh, or name their folder in PIXKIT_CORPUS\n";
        return 1;
    }
    for (const auto& picture : pictures) {
        addBenchmark(*picture, "pixkit", writeWithPixkit<true>);
        addBenchmark(*picture, "web-safe-pixkit", writeWithPixkit<false>);
        addBenchmark(*picture, "giflib", writeWithGiflib);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
