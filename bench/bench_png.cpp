// Decoding whole PNG files from memory: the component and its peers.
#include "peers/png_decoders.h"
#include "pictures.h"
#include "program.h"
#include "surface/cPixSheet.h"

namespace {

using bench::Bytes;
using bench::Group;

std::size_t pixelCount(const Group& group) {
    std::size_t count = 0;
    for (const Bytes& file : group.files) {
        const auto bigEndian32 = [&](std::size_t at) {
            return std::size_t{file[at]} << 24 | std::size_t{file[at + 1]} << 16 | std::size_t{file[at + 2]} << 8 |
                   file[at + 3];
        };
        count += bigEndian32(16) * bigEndian32(20); // width and height in IHDR
    }
    return count;
}

void loadWithPixkit(Bytes& file) {
    pixkit::cPixSheet sheet;
    const auto stream = pixkit::ByteArray::borrow(file.data(), {0, static_cast<std::uint32_t>(file.size())});
    if (!sheet.LoadPicture_Stream(stream)) throw std::runtime_error("not loaded");
    benchmark::DoNotOptimize(sheet.BitsPointer());
}

template <bench::Decoded (*Decode)(std::span<const std::uint8_t>)>
void decodeWithPeer(Bytes& file) {
    const bench::Decoded image = Decode(file);
    benchmark::DoNotOptimize(image.pixels.get());
}

void addBenchmark(Group& group, const char* decoder, void (*decode)(Bytes&)) {
    const std::size_t pixels = pixelCount(group);
    bench::add("png/" + group.name + "/" + decoder, [=, &group](benchmark::State& state) {
        for (auto _ : state) {
            for (Bytes& file : group.files)
                decode(file);
        }
        bench::countPixels(state, static_cast<double>(pixels));
    });
}

} // namespace

int main(int argc, char** argv) {
    static std::vector<Group> groups = bench::pngGroups();
    if (groups.empty()) return bench::noPictures();
    for (Group& group : groups) {
        addBenchmark(group, "pixkit", loadWithPixkit);
        addBenchmark(group, "libpng-rows", decodeWithPeer<bench::decodeLibpngRows>);
        addBenchmark(group, "libpng-simplified", decodeWithPeer<bench::decodeLibpngSimplified>);
        addBenchmark(group, "libspng", decodeWithPeer<bench::decodeSpng>);
        addBenchmark(group, "stb_image", decodeWithPeer<bench::decodeStb>);
    }
    return bench::run(argc, argv);
}
// SPDX-License-Identifier: MIT
