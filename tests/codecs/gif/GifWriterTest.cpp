// What a GIF file says of itself, that it is the same everywhere, and that nothing fails in silence. Whether others
// read the right pixels in it is tests/oracle's question.
#include "support/AllocationFault.h"
#include "support/PngLoading.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class GifWriter : public QuietLoads {};

Bytes saved(const cPixSheet& sheet, bool isAdaptive = true, std::uint8_t tolerance = 128) {
    ByteArray stream;
    EXPECT_TRUE(sheet.SaveToStream_GIF(stream, isAdaptive, tolerance));
    EXPECT_EQ(stream.dimensions(), 1);
    EXPECT_EQ(stream.lowerBound(), 0);
    return bytesOf(stream);
}

Bytes text(std::string_view characters) {
    return {characters.begin(), characters.end()};
}

} // namespace

TEST_F(GifWriter, ABlockOrACodeIsWrong) {
    cPixSheet two, hole;
    fill(two, 3, 1, {{3, 2, 1, 255}, {6, 5, 4, 255}, {3, 2, 1, 255}});
    fill(hole, 2, 1, {{3, 2, 1, 255}, {3, 2, 1, 100}});
    const Bytes frame = {0x2C, 0, 0, 0, 0};
    // Codes of three bits, lowest first: clear 4, the indexes, end 5, which has four bits after three indexes because
    // the reader then has made entry 7.
    EXPECT_EQ(saved(two), (text("GIF87a") + Bytes{3, 0, 1, 0, 0xF0, 0, 0, 1, 2, 3, 4, 5, 6} + frame +
                           Bytes{3, 0, 1, 0, 0, 2, 2, 0x44, 0x50, 0, 0x3B}));
    EXPECT_EQ(saved(hole),
              (text("GIF89a") + Bytes{2, 0, 1, 0, 0xF0, 1, 0, 1, 2, 3, 0, 0, 0} + Bytes{0x21, 0xF9, 4, 1, 0, 0, 1, 0} +
               frame + Bytes{2, 0, 1, 0, 0, 2, 2, 0x44, 0x0A, 0, 0x3B}));
}

TEST_F(GifWriter, ThePaletteHasTheWrongSize) {
    const auto gradient = [](cPixSheet& sheet, std::int32_t colors, bool hasHole) {
        std::vector<Pixel> pixels(static_cast<std::size_t>(colors));
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = {static_cast<std::uint8_t>(i % 255), static_cast<std::uint8_t>(i / 255 * 9), 5, 255};
        if (hasHole) pixels.push_back({});
        fill(sheet, static_cast<std::int32_t>(pixels.size()), 1, pixels);
    };
    const struct {
        std::int32_t colors;
        bool hasHole, isAdaptive;
        std::size_t bits;
    } rows[] = {
        {1, false, true, 1},  {2, false, true, 1},   {2, true, true, 2},   {16, false, true, 4},  {16, true, true, 5},
        {255, true, true, 8}, {256, false, true, 8}, {256, true, true, 8}, {257, false, true, 8}, {3, false, false, 8},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.colors << (row.hasHole ? " and a hole" : ""));
        cPixSheet sheet;
        gradient(sheet, row.colors, row.hasHole);
        const Bytes file = saved(sheet, row.isAdaptive);
        EXPECT_EQ(Bytes(file.begin(), file.begin() + 6), text(row.hasHole ? "GIF89a" : "GIF87a"));
        EXPECT_EQ(file[10], 0xF0 + row.bits - 1);
        const std::size_t after = 13 + (std::size_t{3} << row.bits) + (row.hasHole ? 8 : 0);
        EXPECT_EQ(file[after], 0x2C);
        EXPECT_EQ(file[after + 10], std::max<std::size_t>(2, row.bits));
        EXPECT_EQ(file.back(), 0x3B);
    }
}

TEST_F(GifWriter, OurReaderFindsOtherPixels) {
    const Samples random = noise(8);
    for (const unsigned colors : {1U, 2U, 30U, 255U}) {
        std::vector<Pixel> pixels;
        for (std::size_t i = 0; i < 251 * 130; ++i) {
            const auto color = static_cast<std::uint8_t>(random(i % 251, i / 251, 0) % colors);
            const Pixel visible{color, static_cast<std::uint8_t>(255 - color), 7, 255};
            pixels.push_back(i % 9 == 0 ? Pixel{} : visible);
        }
        cPixSheet sheet, again;
        fill(sheet, 251, 130, pixels);
        EXPECT_TRUE(again.LoadPicture_Stream(ByteArray(saved(sheet))));
        EXPECT_EQ(again.ImageType(), imgGIF);
        EXPECT_EQ(pixelsOf(again), pixels) << colors;
    }
}

// FNV-1a over files of every kind: the same in every build, on every system and processor.
TEST_F(GifWriter, TheBytesDifferBetweenBuilds) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const std::uint32_t colors : {1U, 3U, 200U, 4000U}) {
        for (const bool isAdaptive : {true, false}) {
            const Samples random = noise(colors);
            std::vector<Pixel> pixels;
            for (std::size_t i = 0; i < 300 * 200; ++i) {
                const unsigned color = random(i % 300 / 3, i / 300, 0) % colors;
                const auto alpha = static_cast<std::uint8_t>(i % 7 == 0 ? 90 : i % 11 == 0 ? 200 : 255);
                pixels.push_back({static_cast<std::uint8_t>(color % 91), static_cast<std::uint8_t>(color / 91),
                                  static_cast<std::uint8_t>(i / 300 / 4), alpha});
            }
            cPixSheet sheet;
            fill(sheet, 300, 200, pixels);
            for (const std::uint8_t byte : saved(sheet, isAdaptive))
                hash = (hash ^ byte) * 0x100000001B3U;
        }
    }
    EXPECT_EQ(hash, 0x7193E4F4E59B1A16U);
}

TEST_F(GifWriter, AFailedSaveSaysTrueOrSpoilsTheArray) {
    using platform::SeamCall;
    const TemporaryFolder folder;
    const std::string name = folder.name(u8"größe 图.gif");
    cPixSheet sheet, empty, wide;
    fill(sheet, 300, 1, std::vector<Pixel>(300, Pixel{0, 50, 0, 128}));
    for (std::int32_t x = 0; x < 300; ++x)
        sheet.SetPixel(x, 0, x * 70);
    ASSERT_TRUE(wide.InitializeDIB(65536, 1));
    ByteArray stream(Bytes{1, 2, 3});
    for (const cPixSheet* refused : {&empty, &wide}) {
        EXPECT_FALSE(refused->SaveToStream_GIF(stream));
        EXPECT_EQ(bytesOf(stream), (Bytes{1, 2, 3}));
        EXPECT_FALSE(refused->SaveToFile_GIF(name, true, 128, false));
    }
    EXPECT_FALSE(sheet.SaveToFile_GIF(folder.name(u8"missing/a.gif")));
    for (const SeamCall call : {SeamCall::createFile, SeamCall::writeFile, SeamCall::moveFile}) {
        const platform::ScopedFault fault(call, 0, 1);
        EXPECT_FALSE(sheet.SaveToFile_GIF(name, true, 128, false));
    }
    EXPECT_TRUE(sheet.SaveToFile_GIF(name, true, 128, false)) << "no handle may be left open";
    EXPECT_EQ(readFile(folder.path(u8"größe 图.gif")), saved(sheet));
    for (long after = 0;; ++after) {
        ASSERT_LT(after, 500);
        ByteArray kept(Bytes{1, 2, 3});
        bool isSaved = false;
        {
            const AllocationFault fault(after);
            isSaved = sheet.SaveToStream_GIF(kept);
        }
        if (isSaved) break;
        EXPECT_EQ(bytesOf(kept), (Bytes{1, 2, 3}));
        expectedReports.emplace_back("SaveToStream_GIF");
    }
    EXPECT_FALSE(expectedReports.empty());
}
