// Decoding run-length coded TGA files, made from the pictures of the corpus by our own writer, against stb_image: once
// for four channels as it gives them, and once followed by what brings them into our form (premultiplied B, G, R, A,
// rows bottom-up).
#include "peers/png_decoders.h"
#include "pictures.h"
#include "surface/cPixSheet.h"
#include <benchmark/benchmark.h>
#include <iostream>
#include <stb/stb_image.h>
#include <stdexcept>

namespace {

using bench::Bytes;
using pixkit::ByteArray;
using pixkit::cPixSheet;

struct Picture {
    std::string name;
    Bytes file;
    double megapixels;
};

ByteArray borrowed(const Bytes& file) {
    return ByteArray::borrow(const_cast<std::uint8_t*>(file.data()), {0, static_cast<std::uint32_t>(file.size())});
}

// 24 or 32 bits as the picture has alpha or not, and a palette where it has few colours.
std::vector<Picture> codedPictures() {
    std::vector<Picture> pictures;
    for (const bench::Group& group : bench::pngGroups()) {
        if (group.files.size() != 1) continue;
        cPixSheet sheet;
        ByteArray stream;
        if (!sheet.LoadPicture_Stream(borrowed(group.files[0])) || !sheet.SaveToStream_TGA(stream, true))
            throw std::runtime_error(group.name + " cannot be coded");
        pictures.push_back({group.name, Bytes(stream.data(), stream.data() + stream.size()),
                            static_cast<double>(sheet.Width()) * sheet.Height() / 1e6});
    }
    return pictures;
}

void decodeOurs(const Bytes& file) {
    cPixSheet sheet;
    if (!sheet.LoadPicture_Stream(borrowed(file))) throw std::runtime_error("not loaded");
    benchmark::DoNotOptimize(sheet.BitsPointer());
}

void decodeStbAlone(const Bytes& file) {
    int width = 0;
    int height = 0;
    int channels = 0;
    stbi_uc* const pixels =
        stbi_load_from_memory(file.data(), static_cast<int>(file.size()), &width, &height, &channels, 4);
    if (pixels == nullptr) throw std::runtime_error(stbi_failure_reason());
    benchmark::DoNotOptimize(pixels);
    stbi_image_free(pixels);
}

void decodeStb(const Bytes& file) {
    benchmark::DoNotOptimize(bench::decodeStb(file).pixels.get());
}

void add(const Picture& picture, const char* who, void (*decode)(const Bytes&)) {
    benchmark::RegisterBenchmark(
        ("tga-rle/" + picture.name + "-" + std::to_string(picture.file[16]) + "/" + who).c_str(),
        [&picture, decode](benchmark::State& state) {
            for (auto _ : state)
                decode(picture.file);
            state.counters["Mpixel/s"] = benchmark::Counter(
                picture.megapixels * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
        })
        ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv) {
    static const std::vector<Picture> pictures = codedPictures();
    if (pictures.empty()) {
        std::cerr << "no pictures: run scripts/corpus.sh, or name their folder in PIXKIT_CORPUS\n";
        return 1;
    }
    for (const Picture& picture : pictures) {
        add(picture, "pixkit", decodeOurs);
        add(picture, "stb_image", decodeStbAlone);
        add(picture, "stb_image+form", decodeStb);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
