// Writing whole JPEG files to memory: the component and its peers at the same quality, with what comes out: bytes, and
// how near the picture is (PSNR in decibels over B, G and R, as libjpeg decodes it).
#include "oracle/libjpegVerdict.h"
#include "peers/jpg_encoders.h"
#include "pictures.h"
#include "surface/cPixSheet.h"
#include <benchmark/benchmark.h>
#include <cmath>
#include <iostream>
#include <memory>

namespace {

using bench::Bytes;

struct Picture {
    std::string name;
    pixkit::cPixSheet sheet;
    Bytes rgb; // top row first, for peers that want it so

    const std::uint8_t* rowFromTop(std::int32_t y) const {
        return sheet.BitsPointer() + std::ptrdiff_t{sheet.Height() - 1 - y} * sheet.scanWidth();
    }
};

void writeWithPixkit(const Picture& picture, int quality, Bytes& out) {
    pixkit::ByteArray stream;
    if (!picture.sheet.SaveToStream_JPG(stream, quality)) throw std::runtime_error("not saved");
    out.assign(stream.data(), stream.data() + stream.size());
}

void writeWithLibjpeg(const Picture& picture, int quality, Bytes& out) {
    out = pixkit::test::encodeJpeg(picture.sheet.BitsPointer(), static_cast<std::uint32_t>(picture.sheet.Width()),
                                   static_cast<std::uint32_t>(picture.sheet.Height()), quality);
}

void writeWithStb(const Picture& picture, int quality, Bytes& out) {
    bench::encodeJpegStb(picture.rgb.data(), picture.sheet.Width(), picture.sheet.Height(), quality, out);
}

double psnr(const Picture& picture, const Bytes& file) {
    const auto decoded = pixkit::test::decodeJpeg(file.data(), file.size());
    double squares = 0;
    for (std::int32_t y = 0; y < picture.sheet.Height(); ++y) {
        const std::uint8_t* row = picture.rowFromTop(y);
        const std::uint8_t* other = decoded.pixels[static_cast<std::size_t>(y * picture.sheet.Width())].data();
        for (std::int32_t i = 0; i < picture.sheet.scanWidth(); ++i) {
            if (i % 4 != 3) squares += (row[i] - other[i]) * (row[i] - other[i]);
        }
    }
    return 10 * std::log10(255.0 * 255.0 * 3 * picture.sheet.Width() * picture.sheet.Height() / squares);
}

void addBenchmark(const Picture& picture, const char* who, void (*write)(const Picture&, int, Bytes&), int quality) {
    const std::string name = "jpg-write/" + picture.name + "-" + std::to_string(quality) + "/" + who;
    benchmark::RegisterBenchmark(name.c_str(), [=, &picture](benchmark::State& state) {
        Bytes file;
        for (auto _ : state)
            write(picture, quality, file);
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
    for (const char* name : {"photo_rgb", "wall_rgb", "ilace_rgb"}) {
        auto picture = std::make_unique<Picture>();
        picture->name = name;
        const auto path = (bench::corpusFolder() / (std::string(name) + ".png")).string();
        if (!picture->sheet.LoadPicture_File(path)) continue;
        for (std::int32_t y = 0; y < picture->sheet.Height(); ++y) {
            const std::uint8_t* pixel = picture->rowFromTop(y);
            for (std::int32_t x = 0; x < picture->sheet.Width(); ++x, pixel += 4)
                picture->rgb.insert(picture->rgb.end(), {pixel[2], pixel[1], pixel[0]});
        }
        pictures.push_back(std::move(picture));
    }
    if (pictures.empty()) {
        std::cerr << "no pictures: run scripts/corpus.sh, or name their folder in PIXKIT_CORPUS\n";
        return 1;
    }
    for (const auto& picture : pictures) {
        for (const int quality : {70, 95}) {
            addBenchmark(*picture, "pixkit", writeWithPixkit, quality);
            addBenchmark(*picture, "libjpeg-turbo", writeWithLibjpeg, quality);
            addBenchmark(*picture, "stb_image_write", writeWithStb, quality);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
