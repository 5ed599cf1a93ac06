// Pixels against ImageMagick's, of files of every kind.
#include "support/BmpBuilder.h"
#include <algorithm>
#include <cstdlib>
#include <map>

using namespace pixkit;
using namespace pixkit::test;

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes noise(std::size_t count, std::uint32_t seed) {
    std::mt19937 random(seed);
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(random() >> 13);
    return bytes;
}

std::size_t rowBytes(const BmpFile& file) {
    return (static_cast<std::size_t>(file.width) * file.bitCount + 31) / 32 * 4;
}

// Runs, literals, deltas and short lines, all within their rows.
Bytes runLengthCodes(const BmpFile& file, std::uint32_t seed) {
    std::mt19937 random(seed);
    const auto byteBelow = [&](std::size_t most) { return static_cast<std::uint8_t>(random() % most); };
    Bytes codes;
    for (int y = 0; y < std::abs(file.height); ++y) {
        for (std::size_t left = static_cast<std::size_t>(file.width); left > 0;) {
            std::uint8_t count = static_cast<std::uint8_t>(1 + byteBelow(std::min<std::size_t>(left, 255)));
            const std::uint8_t kind = byteBelow(8);
            if (kind == 0) break;
            if (kind == 1) {
                codes.insert(codes.end(), {0, 2, count, 0});
            } else if (kind < 5 && count >= 3) {
                codes.insert(codes.end(), {0, count});
                const std::size_t bytes = file.compression == 1 ? count : (count + 1U) / 2;
                const Bytes literals = noise(bytes + bytes % 2, static_cast<std::uint32_t>(random()));
                codes.insert(codes.end(), literals.begin(), literals.end());
            } else {
                codes.insert(codes.end(), {count, byteBelow(256)});
            }
            left -= count;
        }
        codes.insert(codes.end(), {0, 0});
    }
    codes.insert(codes.end(), {0, 1});
    return codes;
}

struct Kind {
    std::string name;
    BmpFile file; // without sizes, palette and pixels
    // ImageMagick fills a channel of fewer than 8 bits up by repeating them where we divide: at most this apart.
    int tolerance = 0;
};

std::vector<Kind> kinds() {
    std::vector<Kind> all;
    for (const std::uint32_t headerSize : {12U, 40U, 64U, 108U, 124U}) {
        for (const int bitCount : {1, 4, 8, 24}) {
            if (headerSize == 64 && bitCount != 24) continue; // it takes OS/2 2.x palettes for those of 1.x
            BmpFile file;
            file.headerSize = headerSize;
            file.bitCount = static_cast<std::uint16_t>(bitCount);
            all.push_back({"header" + std::to_string(headerSize) + "-" + std::to_string(bitCount), file});
        }
    }
    const auto masked = [&](const char* name, std::uint32_t headerSize, std::uint16_t bitCount,
                            std::uint32_t compression, std::vector<std::uint32_t> masks, int tolerance) {
        all.push_back({name, {headerSize, 1, 1, bitCount, compression, std::move(masks)}, tolerance});
    };
    masked("rgb-16", 40, 16, 0, {}, 1);
    masked("rgb-32", 40, 32, 0, {}, 0);
    masked("bitfields-555", 40, 16, 3, {0x7C00, 0x3E0, 0x1F}, 1);
    masked("bitfields-565", 40, 16, 3, {0xF800, 0x7E0, 0x1F}, 1);
    masked("bitfields-565-v4", 108, 16, 3, {0xF800, 0x7E0, 0x1F}, 1);
    masked("bitfields-bgrx", 40, 32, 3, {0xFF0000, 0xFF00, 0xFF}, 0);
    masked("bitfields-rgbx", 40, 32, 3, {0xFF, 0xFF00, 0xFF0000}, 0);
    masked("bitfields-bgra-v5", 124, 32, 3, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}, 0);
    masked("bitfields-abgr-v5", 124, 32, 3, {0xFF000000, 0xFF0000, 0xFF00, 0xFF}, 0);
    masked("bitfields-10-10-10", 40, 32, 3, {0x3FF00000, 0xFFC00, 0x3FF}, 1);
    all.push_back({"rle8", {40, 1, 1, 8, 1}});
    all.push_back({"rle4", {40, 1, 1, 4, 2}});
    all.push_back({"rle8-v5", {124, 1, 1, 8, 1}});
    return all;
}

struct Sample {
    std::string name;
    Bytes data;
    int tolerance;
};

std::vector<Sample> samples() {
    std::vector<Sample> all;
    for (const Kind& kind : kinds()) {
        for (const std::int32_t width : {1, 2, 3, 5, 8, 9, 33, 300}) {
            for (const std::int32_t height : {1, 7, -7}) {
                BmpFile file = kind.file;
                const auto seed = static_cast<std::uint32_t>(all.size());
                const bool isRunLength = file.compression == 1 || file.compression == 2;
                if (height < 0 && (file.headerSize == 12 || isRunLength)) continue;
                file.width = width;
                file.height = height;
                const std::size_t entries = file.bitCount <= 8 ? std::size_t{1} << file.bitCount : 0;
                file.palette = noise(entries * (file.headerSize == 12 ? 3 : 4), seed + 1000);
                file.pixels = isRunLength ? runLengthCodes(file, seed)
                                          : noise(rowBytes(file) * static_cast<std::size_t>(std::abs(height)), seed);
                // Not premultiplied, whichever end alpha is at: the program takes all alpha for straight.
                if (file.bitCount == 32) std::ranges::copy(Bytes{128, 255, 255, 128}, file.pixels.begin());
                file.statedSize = static_cast<std::uint32_t>(file.build().size());
                all.push_back({kind.name + "-" + std::to_string(width) + "x" + std::to_string(height), file.build(),
                               kind.tolerance});
            }
        }
    }
    return all;
}

// Straight R, G, B, A from the top; all of them in one run of the program. What it cannot read is missing.
std::map<std::string, Bytes> readWithImageMagick(const std::vector<Sample>& files, const TemporaryFolder& folder) {
    std::ofstream script(folder.path(u8"all.sh"), std::ios::binary);
    script << "cd '" << folder.path(u8"").string() << "' && exec convert-im6.q16";
    for (const Sample& sample : files) {
        writeFile(folder.path(u8"") / (sample.name + ".bmp"), sample.data);
        script << " '(' 'bmp:" << sample.name << ".bmp' -depth 8 -write 'rgba:" << sample.name << ".rgba' +delete ')'";
    }
    script << " null: 2>messages.txt\n";
    script.close();
    std::system(("sh '" + folder.path(u8"all.sh").string() + "'").c_str()); // what is missing tells how it went
    std::map<std::string, Bytes> pictures;
    for (const Sample& sample : files)
        pictures[sample.name] = readFile(folder.path(u8"") / (sample.name + ".rgba"));
    return pictures;
}

// Premultiplied by the store's rule, B, G, R, A; opaque where ours is.
std::vector<Pixel> asStored(const Bytes& rgba, bool isOpaque) {
    std::vector<Pixel> pixels;
    for (std::size_t i = 0; i + 3 < rgba.size(); i += 4) {
        const int alpha = isOpaque ? 255 : rgba[i + 3];
        const auto part = [&](std::size_t channel) {
            return static_cast<std::uint8_t>(rgba[i + channel] * alpha / 255);
        };
        pixels.push_back({part(2), part(1), part(0), static_cast<std::uint8_t>(alpha)});
    }
    return pixels;
}

int greatestDifference(const std::vector<Pixel>& a, const std::vector<Pixel>& b) {
    if (a.size() != b.size()) return 256;
    int difference = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t channel = 0; channel < 4; ++channel)
            difference = std::max(difference, std::abs(a[i][channel] - b[i][channel]));
    return difference;
}

} // namespace

// A machine without the program fails here: every picture is missing.
TEST(BmpOracle, PixelsDifferFromImageMagicks) {
    const TemporaryFolder folder;
    const std::vector<Sample> files = samples();
    const auto theirs = readWithImageMagick(files, folder);
    for (const Sample& sample : files) {
        const LoadedBmp ours = loadBmp(sample.data);
        const Bytes& rgba = theirs.at(sample.name);
        EXPECT_FALSE(rgba.empty()) << sample.name << " was not read by convert-im6.q16";
        if (rgba.empty()) continue;
        EXPECT_LE(greatestDifference(ours.pixels, asStored(rgba, ours.alpha == AlphaNone)), sample.tolerance)
            << sample.name;
    }
}
