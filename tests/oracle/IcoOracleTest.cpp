// Every image of icons that ImageMagick and we make, against what icotool extracts from them.
#include "codecs/ico/IcoBuilder.h"
#include "support/SourceFolder.h"
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
    for (const auto& entry : fs::directory_iterator(sourceFolder() / "tests/data/pictures/imagemagick"))
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

// Images of every depth that we write: icotool and ImageMagick find the pixels that our reader finds, which other tests
// compare with what was saved, and pngcheck has nothing to say of the PNG files.
TEST(IcoOracle, OthersReadOtherPixelsInWrittenIcons) {
    const TemporaryFolder folder;
    cPixSheet sheet;
    std::mt19937 random(8);
    std::vector<Pixel> pixels;
    for (std::int32_t i = 0; i < 90 * 70; ++i) {
        const unsigned alpha = i % 90 < 20 ? 0 : i % 90 < 40 ? static_cast<unsigned>(random() % 256) : 255;
        const auto channel = [&](std::uint_fast32_t value) {
            return static_cast<std::uint8_t>(value % 256 * alpha / 255);
        };
        pixels.push_back({channel(random()), channel(static_cast<unsigned>(i)), channel(static_cast<unsigned>(i / 90)),
                          static_cast<std::uint8_t>(alpha)});
    }
    fill(sheet, 90, 70, pixels);
    sheet.Alpha(AlphaComplex);
    std::vector<IconEntrySize> sizes;
    for (const std::int32_t depth : {1, 4, 8, 24, 32})
        for (const std::int32_t side : {5, 16, 33, 70, 255})
            sizes.push_back({side, side, depth});
    sizes.push_back({300, 300, 32}); // one PNG file: icotool does not choose between two
    ASSERT_EQ(sheet.SaveToFile_ICO(folder.name(u8"the.ico"), {}, false, sizes), 26);
    const Bytes data = readFile(folder.path(u8"the.ico"));
    const auto command = [&](const std::string& line) {
        return std::system(("cd '" + folder.path(u8"").string() + "' && " + line).c_str());
    };
    EXPECT_EQ(command("convert-im6.q16 the.ico -depth 8 PNG32:im-%d.png"), 0);
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const auto& [width, height, depth] = sizes[i];
        SCOPED_TRACE(testing::Message() << width << " pixels at " << depth << " bits");
        const std::string number = std::to_string(i), index = std::to_string(i + 1);
        EXPECT_EQ(command("icotool -x --index=" + index + " -o the.png the.ico && pngcheck -q the.png"), 0);
        const auto expected = loadIco(data, {width, height, depth}).pixels;
        EXPECT_EQ(expected.size(), static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        if (depth != 24 || width % 4 == 0) { // other rows are misplaced there
            EXPECT_TRUE(loadIco(readFile(folder.path(u8"the.png"))).pixels == expected) << "icotool";
        }
        const std::string ours = "im-" + number + ".png";
        EXPECT_TRUE(loadIco(readFile(folder.path(std::u8string(ours.begin(), ours.end())))).pixels == expected)
            << "ImageMagick";
    }
}
