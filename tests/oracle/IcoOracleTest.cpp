// Every image of icons that ImageMagick and we make, against what icotool extracts from them.
#include "codecs/ico/IcoBuilder.h"
#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>

using namespace pixkit;
using namespace pixkit::test;

namespace {

namespace fs = std::filesystem;

// Noise with the directory telling the truth, and never premultiplied, which icotool knows nothing of.
Bytes noiseIcon(std::uint16_t bitCount, std::int32_t width, std::int32_t height) {
    std::mt19937 random(bitCount * 1000U + static_cast<unsigned>(width));
    const auto bytes = [&](std::size_t count) {
        Bytes made(count);
        std::ranges::generate(made, [&] { return static_cast<std::uint8_t>(random() >> 13); });
        return made;
    };
    const auto rows = static_cast<std::size_t>(height);
    const auto rowBytes = [&](std::size_t bits) { return (static_cast<std::size_t>(width) * bits + 31) / 32 * 4; };
    BmpFile file{.width = width, .height = height, .bitCount = bitCount};
    file.palette = bytes(bitCount <= 8 ? std::size_t{4} << bitCount : 0);
    file.pixels = bytes(rowBytes(bitCount) * rows);
    if (bitCount == 32) std::ranges::copy(Bytes{255, 255, 255, 128}, file.pixels.begin());
    return icoFile({{icoBitmap(file, bytes(rowBytes(1) * rows)), static_cast<std::uint8_t>(width),
                     static_cast<std::uint8_t>(height), 1, bitCount}});
}

std::map<std::string, Bytes> icons() {
    std::map<std::string, Bytes> all;
    for (const int bitCount : {1, 4, 8, 32})
        for (const std::int32_t width : {1, 7, 8, 33, 48})
            all["noise-" + std::to_string(bitCount) + "-" + std::to_string(width)] =
                noiseIcon(static_cast<std::uint16_t>(bitCount), width, 9);
    for (const auto& entry : fs::directory_iterator(fs::path(PIXKIT_SOURCE_DIR) / "tests/data/pictures/imagemagick"))
        if (entry.path().extension() == ".ico") all[entry.path().stem().string()] = readFile(entry.path());
    return all;
}

} // namespace

// A machine without the program fails here: every picture is missing.
TEST(IcoOracle, PixelsDifferFromIcotools) {
    const TemporaryFolder folder;
    const auto all = icons();
    ASSERT_GT(all.size(), 20U);
    for (const auto& [name, data] : all) {
        SCOPED_TRACE(name);
        writeFile(folder.path(u8"the.ico"), data);
        std::system(
            ("cd '" + folder.path(u8"").string() + "' && rm -f the.png && icotool -x -o the.png the.ico").c_str());
        const Bytes extracted = readFile(folder.path(u8"the.png"));
        ASSERT_FALSE(extracted.empty()) << "not read by icotool";
        EXPECT_EQ(loadIco(data).pixels, loadIco(extracted).pixels);
    }
}
