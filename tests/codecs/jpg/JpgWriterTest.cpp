// What a JPEG file says of itself, that it is the same everywhere, and that nothing fails in silence. Whether others
// read the right picture in it is tests/oracle's question.
#include "codecs/jpg/JpgHuffman.h"
#include "codecs/jpg/JpgQuantisation.h"
#include "support/AllocationFault.h"
#include "support/PngLoading.h"
#include <algorithm>
#include <map>

using namespace pixkit;
using namespace pixkit::test;

namespace {

class JpgWriter : public QuietLoads {};

Bytes saved(const cPixSheet& sheet, std::int32_t quality = 70) {
    ByteArray stream;
    EXPECT_TRUE(sheet.SaveToStream_JPG(stream, quality));
    EXPECT_EQ(stream.dimensions(), 1);
    EXPECT_EQ(stream.lowerBound(), 0);
    return bytesOf(stream);
}

// Soft gradients under noise, so that all frequencies occur.
void draw(cPixSheet& sheet, std::int32_t width, std::int32_t height, bool isGray = false) {
    std::vector<Pixel> pixels;
    const Samples random = noise(static_cast<std::uint32_t>(width * 64 + height));
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            const auto at = [&](std::size_t channel, std::int32_t slope) {
                return static_cast<std::uint8_t>(
                    (slope * (x + y) +
                     static_cast<std::int32_t>(
                         random(static_cast<std::size_t>(x), static_cast<std::size_t>(y), channel) % 40)) %
                    256);
            };
            const Pixel pixel{at(0, 3), at(isGray ? 0 : 1, isGray ? 3 : 7), at(isGray ? 0 : 2, isGray ? 3 : 5), 255};
            pixels.push_back(pixel);
        }
    }
    fill(sheet, width, height, pixels);
    sheet.Alpha(AlphaNone);
}

// Marker to what stands behind it; of tables, all of them.
std::map<int, Bytes> segmentsOf(const Bytes& file) {
    std::map<int, Bytes> segments;
    std::size_t at = 2;
    while (at + 4 <= file.size()) {
        const std::size_t length = std::size_t{file[at + 2]} << 8 | file[at + 3];
        const auto begin = file.begin() + static_cast<std::ptrdiff_t>(at);
        Bytes& segment = segments[file[at + 1]];
        segment.insert(segment.end(), begin + 4, begin + 2 + static_cast<std::ptrdiff_t>(length));
        if (file[at + 1] == 0xDA) break;
        at += 2 + length;
    }
    return segments;
}

} // namespace

TEST_F(JpgWriter, TheHeaderSaysSomethingElse) {
    cPixSheet colour, gray, tintedAlpha;
    draw(colour, 300, 2);
    draw(gray, 20, 10, true);
    fill(tintedAlpha, 1, 1, {{0, 0, 0, 1}});
    const Bytes halved = {8, 0, 2, 1, 44, 3, 1, 0x22, 0, 2, 0x11, 1, 3, 0x11, 1};
    const Bytes full = {8, 0, 2, 1, 44, 3, 1, 0x11, 0, 2, 0x11, 1, 3, 0x11, 1};
    const struct {
        const char* fault;
        const cPixSheet& sheet;
        std::int32_t quality;
        Bytes frame;
        std::uint8_t firstDivisor;
    } rows[] = {
        {"half the chroma", colour, 70, halved, 10},
        {"half the chroma up to 89", colour, 89, halved, 4},
        {"full chroma from 90", colour, 90, full, 3},
        {"the example table as it is", colour, 50, halved, 16},
        {"quality 100", colour, 100, full, 1},
        {"quality 1, divisors held at 255", colour, 1, halved, 255},
        {"too low", colour, -5, halved, 255},
        {"too high", colour, 1000, full, 1},
        {"grays are one component", gray, 70, {8, 0, 10, 0, 20, 1, 1, 0x11, 0}, 10},
        {"alpha over black is gray", tintedAlpha, 95, {8, 0, 1, 0, 1, 1, 1, 0x11, 0}, 2},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fault);
        const Bytes file = saved(row.sheet, row.quality);
        const auto segments = segmentsOf(file);
        ASSERT_TRUE(segments.contains(0xC0) && segments.contains(0xDB) && segments.contains(0xE0));
        EXPECT_EQ(segments.at(0xC0), row.frame);
        EXPECT_EQ(segments.at(0xDB)[1], row.firstDivisor);
        EXPECT_EQ(segments.at(0xE0), (Bytes{'J', 'F', 'I', 'F', 0, 1, 2, 0, 0, 1, 0, 1, 0, 0}));
        EXPECT_EQ(Bytes(file.begin(), file.begin() + 2), (Bytes{0xFF, 0xD8}));
        EXPECT_EQ(Bytes(file.end() - 2, file.end()), (Bytes{0xFF, 0xD9}));
    }
}

TEST_F(JpgWriter, TransparencyIsFlattenedOntoAnotherColour) {
    const TemporaryFolder folder;
    const auto savedOnto = [&](const cPixSheet& sheet, std::int32_t colour) {
        EXPECT_TRUE(sheet.SaveToFile_JPG(folder.name(u8"größe 图.jpg"), 95, colour, false));
        return readFile(folder.path(u8"größe 图.jpg"));
    };
    cPixSheet translucent, onColour, onBlack, claimed;
    fill(translucent, 2, 1, {{100, 50, 25, 128}, {0, 0, 0, 0}});
    translucent.Alpha(AlphaNone); // the pixels count, not what the property says
    // 10 * 127 / 255 = 4, 20 * 127 / 255 = 9, 30 * 127 / 255 = 14
    fill(onColour, 2, 1, {{104, 59, 39, 255}, {10, 20, 30, 255}});
    fill(onBlack, 2, 1, {{100, 50, 25, 255}, {0, 0, 0, 255}});
    fill(claimed, 2, 1, {{100, 50, 25, 0}, {0, 0, 0, 0}}); // alpha that carries nothing
    EXPECT_EQ(savedOnto(translucent, 0x0A141E), saved(onColour, 95));
    EXPECT_EQ(saved(translucent, 95), saved(onBlack, 95));
    EXPECT_EQ(savedOnto(claimed, 0x0A141E), saved(onBlack, 95));
}

// FNV-1a over files of many sizes and qualities: the same in every build, on every system and processor.
TEST_F(JpgWriter, TheBytesDifferBetweenBuilds) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    const auto add = [&](const cPixSheet& sheet, std::int32_t quality) {
        for (const std::uint8_t byte : saved(sheet, quality))
            hash = (hash ^ byte) * 0x100000001B3U;
    };
    cPixSheet sheet;
    for (std::int32_t width = 1; width <= 17; ++width) {
        for (std::int32_t height = 1; height <= 17; ++height) {
            draw(sheet, width, height, height % 4 == 0);
            add(sheet, width % 2 == 0 ? 70 : 92);
        }
    }
    draw(sheet, 301, 67);
    for (std::int32_t quality = 1; quality <= 100; ++quality)
        add(sheet, quality);
    EXPECT_EQ(hash, 0xC179E4551622F109U);
}

TEST_F(JpgWriter, AQuantisedCoefficientIsNotTheRoundedQuotient) {
    for (std::uint32_t divisor = 1; divisor <= 255; ++divisor) {
        JpgQuantisation table;
        table.fill(static_cast<std::uint8_t>(divisor));
        const kernels::BlockQuantiser q = jpgBlockQuantiser(table);
        for (std::uint32_t x = 0; x < 15000; ++x) {
            const std::uint32_t quotient = ((x + q.bias[9]) * q.reciprocal[9] >> 16) * q.scale[9] >> 16;
            ASSERT_EQ(quotient, (x + 4 * divisor) / (8 * divisor)) << x << " / " << 8 * divisor;
        }
    }
}

TEST_F(JpgWriter, CodesAreTooLongOrNotOfTheLeastLength) {
    const struct {
        const char* fault;
        std::vector<std::uint32_t> frequencies;
        std::vector<int> lengths;
    } rows[] = {
        {"one symbol", {5}, {1}},
        {"two symbols: one code of ones is left free", {5, 4}, {1, 2}},
        {"four equal symbols", {1, 1, 1, 1}, {2, 2, 2, 3}},
        {"unused symbols have none", {0, 9, 0, 9, 18}, {0, 3, 0, 2, 1}},
    };
    for (const auto& row : rows) {
        std::array<std::uint32_t, 256> frequencies{};
        std::ranges::copy(row.frequencies, frequencies.begin());
        const auto table = JpgHuffmanTable::make(frequencies);
        std::vector<int> lengths;
        for (std::size_t i = 0; i < row.frequencies.size(); ++i)
            lengths.push_back(table.codes[i].length);
        std::ranges::sort(lengths);
        std::vector<int> expected = row.lengths;
        std::ranges::sort(expected);
        EXPECT_EQ(lengths, expected) << row.fault;
    }
    // Fibonacci's numbers give the deepest trees: 40 levels here. And all 256 symbols at once.
    std::array<std::uint32_t, 256> deep{}, all{};
    all.fill(1);
    deep[0] = deep[1] = 1;
    for (std::size_t i = 2; i < 40; ++i)
        deep[i] = deep[i - 1] + deep[i - 2];
    for (const auto& frequencies : {deep, all}) {
        const auto table = JpgHuffmanTable::make(frequencies);
        double room = 1; // Kraft's sum, with the code of ones left over
        for (std::size_t i = 0; i < 256; ++i) {
            EXPECT_EQ(table.codes[i].length > 0, frequencies[i] > 0);
            if (frequencies[i] == 0) continue;
            EXPECT_LE(table.codes[i].length, 16);
            EXPECT_NE(table.codes[i].bits, (1U << table.codes[i].length) - 1);
            room -= 1.0 / (1 << table.codes[i].length);
        }
        EXPECT_GT(room, 0);
    }
}

TEST_F(JpgWriter, AFailedSaveSaysTrueOrSpoilsTheArray) {
    using platform::SeamCall;
    const TemporaryFolder folder;
    const std::string name = folder.name(u8"a.jpg");
    cPixSheet sheet, empty, wide;
    fill(sheet, 1, 1, {{0, 50, 0, 128}});
    ASSERT_TRUE(wide.InitializeDIB(65536, 1));
    ByteArray stream(Bytes{1, 2, 3});
    for (const cPixSheet* refused : {&empty, &wide}) {
        EXPECT_FALSE(refused->SaveToStream_JPG(stream));
        EXPECT_EQ(bytesOf(stream), (Bytes{1, 2, 3}));
        EXPECT_FALSE(refused->SaveToFile_JPG(name, 70, 0, false));
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path(u8"a.jpg")));
    EXPECT_FALSE(sheet.SaveToFile_JPG(folder.name(u8"missing/a.jpg")));
    for (const SeamCall call : {SeamCall::createFile, SeamCall::writeFile, SeamCall::moveFile}) {
        writeFile(folder.path(u8"a.jpg"), {1});
        {
            const platform::ScopedFault fault(call, 0, 1);
            EXPECT_FALSE(sheet.SaveToFile_JPG(name, 70, 0, false));
        }
        EXPECT_TRUE(sheet.SaveToFile_JPG(name, 70, 0, false)) << "no handle may be left open";
    }
    for (long after = 0;; ++after) {
        ASSERT_LT(after, 200);
        ByteArray kept(Bytes{1, 2, 3});
        bool isSaved = false;
        {
            const AllocationFault fault(after);
            isSaved = sheet.SaveToStream_JPG(kept);
        }
        if (isSaved) break;
        EXPECT_EQ(bytesOf(kept), (Bytes{1, 2, 3}));
        expectedReports.emplace_back("SaveToStream_JPG");
    }
    EXPECT_FALSE(expectedReports.empty());
}
