#include "support/AllocationFault.h"
#include "support/BmpBuilder.h"
#include "support/PngLoading.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class BmpReader : public QuietLoads {};

// Entries of a palette, (i, 100 + i, 200) each.
Bytes paletteOf(int entries, std::size_t entrySize = 4) {
    Bytes palette;
    for (int i = 0; i < entries; ++i) {
        for (const int byte : {i, 100 + i, 200})
            palette.push_back(static_cast<std::uint8_t>(byte));
        palette.resize(palette.size() + entrySize - 3, 0x77); // the fourth byte means nothing
    }
    return palette;
}
Pixel entry(int index) {
    return {static_cast<std::uint8_t>(index), static_cast<std::uint8_t>(100 + index), 200, 255};
}
constexpr Pixel black = {0, 0, 0, 255};

std::vector<Pixel> entries(std::initializer_list<int> indexes) {
    std::vector<Pixel> pixels;
    for (const int index : indexes)
        pixels.push_back(index < 0 ? black : entry(index));
    return pixels;
}

struct Case {
    const char* what;
    BmpFile file;
    std::vector<Pixel> pixels; // top row first
};

void expectOpaque(std::span<const Case> cases) {
    for (const Case& test : cases)
        EXPECT_EQ(loadBmp(test.file),
                  (LoadedBmp{test.file.width, std::abs(test.file.height), test.pixels, AlphaNone, imgBitmap}))
            << test.what;
}

} // namespace

TEST_F(BmpReader, AHeaderIsMisread) {
    const Bytes two = {1, 2, 3, 0, 4, 5, 6, 0}; // one pixel a row
    const std::vector<Pixel> bottomUp = {{4, 5, 6, 255}, {1, 2, 3, 255}}, topDown = {{1, 2, 3, 255}, {4, 5, 6, 255}};
    const Case cases[] = {
        {"core", {12, 1, 2, 24, 0, {}, {}, two}, bottomUp},
        {"OS/2, the shortest", {16, 1, 2, 24, 0, {}, {}, two}, bottomUp},
        {"OS/2, shortened within a field", {18, 1, 2, 24, 0, {}, {}, two}, bottomUp},
        {"info", {40, 1, 2, 24, 0, {}, {}, two}, bottomUp},
        {"V2", {52, 1, 2, 24, 0, {}, {}, two}, bottomUp},
        {"V3", {56, 1, 2, 24, 0, {}, {}, two}, bottomUp},
        {"OS/2, full", {64, 1, 2, 24, 0, {}, {}, two}, bottomUp},
        {"V4", {108, 1, 2, 24, 0, {}, {}, two}, bottomUp},
        {"V5", {124, 1, 2, 24, 0, {}, {}, two}, bottomUp},
        {"one from the future", {200, 1, 2, 24, 0, {}, {}, two}, bottomUp},
        {"top-down", {40, 1, -2, 24, 0, {}, {}, two}, topDown},
        {"a gap before the pixels", {40, 1, 2, 24, 0, {}, {}, two, 0, {}, 9}, bottomUp},
        {"a palette that nobody needs", {40, 1, 2, 24, 0, {}, paletteOf(3), two, 3}, bottomUp},
        {"and one that is not there", {40, 1, 2, 24, 0, {}, {}, two, 3}, bottomUp},
        {"no offset of the pixels", {40, 1, 2, 24, 0, {}, {}, two, 0, 0}, bottomUp},
        {"no offset, and a palette", {40, 1, 2, 24, 0, {}, paletteOf(3), two, 3, 0}, bottomUp},
        {"an offset within the header", {124, 1, 2, 24, 0, {}, {}, two, 0, 54}, bottomUp},
        {"an offset at the end", {40, 1, 2, 24, 0, {}, {}, two, 0, 62}, bottomUp},
        {"an offset that leaves too little", {40, 1, 2, 24, 0, {}, {}, two, 0, 55}, bottomUp},
        {"an offset far away, and a palette count that cannot be",
         {40, 1, 2, 24, 0, {}, {}, two, 0x40000000, 9999},
         bottomUp},
        {"a file size that is too large", {40, 1, 2, 24, 0, {}, {}, two, 0, {}, 0, 0xFFFFFFFF}, bottomUp},
        {"a file size that is too small", {40, 1, 2, 24, 0, {}, {}, two, 0, {}, 0, 3}, bottomUp},
    };
    expectOpaque(cases);
}

TEST_F(BmpReader, IndexesOrPalettesAreMisread) {
    const Bytes bits1 = {0xA5, 0x40, 0, 0}, bits4 = {0x01, 0x2F, 0xE0, 0}, bits2 = {0x1B, 0x80, 0, 0};
    const Bytes bytes8 = {0, 1, 255, 2};
    const auto one = entries({1, 0, 1, 0, 0, 1, 0, 1, 0, 1});
    const Case cases[] = {
        {"1 bit", {40, 10, 1, 1, 0, {}, paletteOf(2), bits1}, one},
        {"1 bit, core", {12, 10, 1, 1, 0, {}, paletteOf(2, 3), bits1}, one},
        {"2 bits", {40, 5, 1, 2, 0, {}, paletteOf(4), bits2}, entries({0, 1, 2, 3, 2})},
        {"4 bits", {40, 5, 1, 4, 0, {}, paletteOf(16), bits4}, entries({0, 1, 2, 15, 14})},
        {"4 bits, core", {12, 5, 1, 4, 0, {}, paletteOf(16, 3), bits4}, entries({0, 1, 2, 15, 14})},
        {"8 bits", {40, 4, 1, 8, 0, {}, paletteOf(256), bytes8}, entries({0, 1, 255, 2})},
        {"8 bits, V5", {124, 4, 1, 8, 0, {}, paletteOf(256), bytes8}, entries({0, 1, 255, 2})},
        {"a short palette", {40, 4, 1, 8, 0, {}, paletteOf(2), bytes8, 2}, entries({0, 1, -1, -1})},
        {"one cut by the pixels' offset", {40, 4, 1, 8, 0, {}, paletteOf(2), bytes8}, entries({0, 1, -1, -1})},
        {"the same, core", {12, 4, 1, 8, 0, {}, paletteOf(2, 3), bytes8}, entries({0, 1, -1, -1})},
        {"an oversized palette", {40, 10, 1, 1, 0, {}, paletteOf(5), bits1, 5}, one},
        {"oversized, no offset", {40, 10, 1, 1, 0, {}, paletteOf(5), bits1, 5, 0}, one},
        {"oversized, more than 256", {40, 4, 1, 8, 0, {}, paletteOf(300), bytes8, 300}, entries({0, 1, 255, 2})},
        {"a count that cannot be, no offset", {40, 10, 1, 1, 0, {}, paletteOf(2), bits1, 0xFFFFFFFF, 0}, one},
        {"no palette at all", {40, 10, 1, 1, 0, {}, {}, bits1, 0, 54}, std::vector<Pixel>(10, black)},
    };
    expectOpaque(cases);
}

TEST_F(BmpReader, MasksOrTheirScalingAreWrong) {
    const std::vector<std::uint32_t> rgb565 = {0xF800, 0x07E0, 0x1F}, rgb8 = {0xFF0000, 0xFF00, 0xFF};
    const Case cases[] = {
        {"16 bits are 5-5-5",
         {40, 2, 1, 16, 0, {}, {}, {0x1F, 0x80, 0xE3, 0x7F}},
         {{255, 0, 0, 255}, {25, 255, 255, 255}}},
        {"5-6-5", {40, 2, 1, 16, 3, rgb565, {}, {0xE0, 0x07, 0x21, 0x08}}, {{0, 255, 0, 255}, {8, 4, 8, 255}}},
        {"5-6-5 in a V4 header",
         {108, 2, 1, 16, 3, rgb565, {}, {0xE0, 0x07, 0x21, 0x08}},
         {{0, 255, 0, 255}, {8, 4, 8, 255}}},
        {"4-4-4",
         {40, 2, 1, 16, 3, {0xF00, 0xF0, 0xF}, {}, {0x21, 0xF3, 0xEF, 0x0E}},
         {{17, 34, 51, 255}, {255, 238, 238, 255}}},
        {"1-2-3 bits",
         {40, 2, 1, 16, 3, {1, 6, 0x38}, {}, {0x2B, 0, 0x3F, 0}},
         {{182, 85, 255, 255}, {255, 255, 255, 255}}},
        {"masks left out", {40, 2, 1, 16, 3, {0, 0, 0}, {}, {0x1F, 0, 0, 0x7C}}, {{255, 0, 0, 255}, {0, 0, 255, 255}}},
        {"one mask left out", {40, 2, 1, 16, 3, {0, 0xFF00, 0xFF}, {}, {1, 2, 3, 4}}, {{1, 2, 0, 255}, {3, 4, 0, 255}}},
        {"32 bits without an alpha mask", {40, 1, 1, 32, 3, rgb8, {}, {1, 2, 3, 4}}, {{1, 2, 3, 255}}},
        {"the same in a V3 header", {56, 1, 1, 32, 3, rgb8, {}, {1, 2, 3, 4}}, {{1, 2, 3, 255}}},
        {"red first", {40, 1, 1, 32, 3, {0xFF, 0xFF00, 0xFF0000}, {}, {1, 2, 3, 4}}, {{3, 2, 1, 255}}},
        {"channels in the upper bytes",
         {40, 1, 1, 32, 3, {0xFF000000, 0xFF0000, 0xFF00}, {}, {1, 2, 3, 4}},
         {{2, 3, 4, 255}}},
        {"10-10-10",
         {40, 1, 1, 32, 3, {0x3FF00000, 0xFFC00, 0x3FF}, {}, {0xFF, 0xFF, 0x1F, 0x00}},
         {{255, 255, 0, 255}}},
        {"10-10-10, rounded",
         {40, 1, 1, 32, 3, {0x3FF00000, 0xFFC00, 0x3FF}, {}, {0x03, 0x08, 0x00, 0x20}},
         {{1, 0, 128, 255}}},
        {"one mask of 32 bits", {40, 1, 1, 32, 3, {0xFFFFFFFF, 0, 0}, {}, {0, 0, 0, 0x80}}, {{0, 0, 128, 255}}},
        {"a mask with a hole", {40, 1, 1, 32, 3, {0xF0F, 0, 0}, {}, {0xFF, 0xFF, 0, 0}}, {{0, 0, 255, 255}}},
        {"masks behind the header, no offset", {40, 1, 1, 16, 3, rgb565, {}, {0xE0, 0x07}, 0, 0}, {{0, 255, 0, 255}}},
    };
    expectOpaque(cases);

    // Every value of five bits, rounded to nearest.
    Bytes words;
    for (std::uint8_t value = 0; value < 32; ++value)
        words.insert(words.end(), {value, 0});
    constexpr std::array<std::uint8_t, 32> scaled = {0,   8,   16,  25,  33,  41,  49,  58,  66,  74,  82,
                                                     90,  99,  107, 115, 123, 132, 140, 148, 156, 165, 173,
                                                     181, 189, 197, 206, 214, 222, 230, 239, 247, 255};
    const auto pixels = loadBmp(BmpFile{40, 32, 1, 16, 0, {}, {}, words}).pixels;
    ASSERT_EQ(pixels.size(), scaled.size());
    for (std::size_t i = 0; i < scaled.size(); ++i)
        EXPECT_EQ(pixels[i][0], scaled[i]) << i;
}

TEST_F(BmpReader, AlphaIsMisjudged) {
    const std::vector<std::uint32_t> bgra = {0xFF0000, 0xFF00, 0xFF, 0xFF000000},
                                     rgba = {0xFF, 0xFF00, 0xFF0000, 0xFF000000};
    const std::vector<std::uint32_t> abgr = {0xFF000000, 0xFF0000, 0xFF00, 0xFF}, argb4 = {0xF00, 0xF0, 0xF, 0xF000};
    const struct {
        const char* what;
        BmpFile file;
        std::vector<Pixel> pixels;
        AlphaTypeEnum alpha;
        eImageFormat type;
    } rows[] = {
        {"straight",
         {40, 2, 1, 32, 0, {}, {}, {200, 100, 50, 128, 9, 9, 9, 0}},
         {{100, 50, 25, 128}, {0, 0, 0, 0}},
         AlphaComplex,
         imgBmpARGB},
        {"premultiplied",
         {40, 2, 1, 32, 0, {}, {}, {100, 50, 25, 128, 0, 0, 0, 0}},
         {{100, 50, 25, 128}, {0, 0, 0, 0}},
         AlphaComplex,
         imgBmpPARGB},
        {"on or off",
         {40, 2, 1, 32, 0, {}, {}, {1, 2, 3, 255, 0, 0, 0, 0}},
         {{1, 2, 3, 255}, {0, 0, 0, 0}},
         AlphaSimple,
         imgBmpPARGB},
        {"on or off, straight",
         {40, 2, 1, 32, 0, {}, {}, {9, 9, 9, 0, 1, 2, 3, 255}},
         {{0, 0, 0, 0}, {1, 2, 3, 255}},
         AlphaSimple,
         imgBmpARGB},
        {"all 0: unused",
         {40, 2, 1, 32, 0, {}, {}, {1, 2, 3, 0, 4, 5, 6, 0}},
         {{1, 2, 3, 255}, {4, 5, 6, 255}},
         AlphaNone,
         imgBitmap},
        {"all 255",
         {40, 2, 1, 32, 0, {}, {}, {1, 2, 3, 255, 4, 5, 6, 255}},
         {{1, 2, 3, 255}, {4, 5, 6, 255}},
         AlphaNone,
         imgBitmap},
        {"no bit fields in a V5 header",
         {124, 1, 1, 32, 0, bgra, {}, {200, 100, 50, 128}},
         {{100, 50, 25, 128}},
         AlphaComplex,
         imgBmpARGB},
        {"bit fields in a V5 header",
         {124, 1, 1, 32, 3, bgra, {}, {200, 100, 50, 128}},
         {{100, 50, 25, 128}},
         AlphaComplex,
         imgBmpARGB},
        {"in a V3 header",
         {56, 1, 1, 32, 3, rgba, {}, {50, 100, 200, 128}},
         {{100, 50, 25, 128}},
         AlphaComplex,
         imgBmpARGB},
        {"behind the header",
         {40, 1, 1, 32, 6, abgr, {}, {128, 200, 100, 50}},
         {{100, 50, 25, 128}},
         AlphaComplex,
         imgBmpARGB},
        {"of 16 bits",
         {40, 2, 1, 16, 6, argb4, {}, {0xFF, 0x8F, 0, 0}},
         {{136, 136, 136, 136}, {0, 0, 0, 0}},
         AlphaComplex,
         imgBmpARGB},
    };
    for (const auto& row : rows)
        EXPECT_EQ(loadBmp(row.file), (LoadedBmp{row.file.width, 1, row.pixels, row.alpha, row.type})) << row.what;
}

TEST_F(BmpReader, WhatIsNoPictureIsTakenForOne) {
    const Bytes pixels(64, 1);
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max(), least = -most - 1;
    const BmpFile refused[] = {
        {40, 0, 1, 24, 0, {}, {}, pixels},
        {40, 1, 0, 24, 0, {}, {}, pixels},
        {40, -1, 1, 24, 0, {}, {}, pixels},
        {40, least, 1, 24, 0, {}, {}, pixels},
        {40, 1, least, 24, 0, {}, {}, pixels},
        {12, 0, 1, 24, 0, {}, {}, pixels},
        {40, most, most, 1, 0, {}, {}, pixels},
        {40, most, -most, 32, 0, {}, {}, pixels},
        {40, 65536, 65536, 1, 0, {}, {}, pixels},
        {40, 0x8000000, 32, 32, 0, {}, {}, pixels},
        {40, 20000, 20000, 24, 0, {}, {}, pixels}, // the data cannot fill it
        {40, 1, 1, 0, 0, {}, {}, pixels},
        {40, 1, 1, 3, 0, {}, {}, pixels},
        {40, 1, 1, 64, 0, {}, {}, pixels},
        {40, 1, 1, 8, 2, {}, paletteOf(256), pixels},
        {40, 1, 1, 4, 1, {}, paletteOf(16), pixels},
        {40, 1, 1, 24, 1, {}, {}, pixels},
        {40, 1, 1, 24, 3, {0xFF0000, 0xFF00, 0xFF}, {}, pixels},
        {40, 1, 1, 8, 3, {0xFF0000, 0xFF00, 0xFF}, {}, pixels},
        {40, 1, 1, 24, 4, {}, {}, pixels},
        {40, 1, 1, 0, 5, {}, {}, pixels},
        {40, 1, 1, 32, 11, {}, {}, pixels},
        {64, 1, 1, 1, 3, {}, paletteOf(2), pixels},
        {64, 1, 1, 24, 4, {}, {}, pixels},
        {13, 1, 1, 24, 0, {}, {}, pixels},
        {15, 1, 1, 24, 0, {}, {}, pixels},
    };
    for (const BmpFile& file : refused)
        EXPECT_EQ(loadBmp(file), LoadedBmp()) << file.headerSize << ": " << file.width << " x " << file.height << ", "
                                              << file.bitCount << ", " << file.compression;
    const BmpFile good{40, 1, 1, 24, 0, {}, {}, {1, 2, 3, 0}};
    for (const std::size_t byte : {0U, 1U, 14U, 17U}) { // signature, header size
        Bytes data = good.build();
        data[byte] ^= 0x80;
        EXPECT_EQ(loadBmp(data), LoadedBmp()) << byte;
    }
    EXPECT_NE(loadBmp(good), LoadedBmp());
}

// Half of the rows' bytes must be there; what the data lacks is 0.
TEST_F(BmpReader, DataThatEndsEarlyIsShownWrong) {
    const Bytes two = {1, 2, 3, 0, 4, 5, 6, 0}, one32 = {9, 8, 7, 255};
    const auto cut = [](BmpFile file, std::size_t missing) {
        file.pixels.resize(file.pixels.size() - missing);
        return file;
    };
    const BmpFile bottomUp{40, 1, 2, 24, 0, {}, {}, two}, topDown{40, 1, -2, 24, 0, {}, {}, two};
    const Case cases[] = {
        {"only padding is missing", cut(bottomUp, 1), {{4, 5, 6, 255}, {1, 2, 3, 255}}},
        {"within a pixel", cut(bottomUp, 2), {{4, 5, 0, 255}, {1, 2, 3, 255}}},
        {"half", cut(bottomUp, 4), {{0, 0, 0, 255}, {1, 2, 3, 255}}},
        {"half, top-down", cut(topDown, 4), {{1, 2, 3, 255}, {0, 0, 0, 255}}},
        {"indexes", {40, 1, 2, 8, 0, {}, paletteOf(256), {7, 0, 0, 0}}, {entry(0), entry(7)}},
    };
    expectOpaque(cases);
    EXPECT_EQ(loadBmp(BmpFile{40, 1, 2, 32, 0, {}, {}, one32}),
              (LoadedBmp{1, 2, {{0, 0, 0, 0}, {9, 8, 7, 255}}, AlphaSimple, imgBmpPARGB}));
    EXPECT_EQ(loadBmp(cut(bottomUp, 5)), LoadedBmp()) << "less than half";
}

TEST_F(BmpReader, WhatTheWriterWritesDoesNotComeBack) {
    const struct {
        std::vector<Pixel> pixels; // 3 x 2
        AlphaTypeEnum alpha;
        eImageFormat type;
    } rows[] = {
        {{{1, 2, 3, 255}, {4, 5, 6, 255}, {7, 8, 9, 255}, {0, 0, 0, 255}, {255, 255, 255, 255}, {1, 1, 1, 255}},
         AlphaNone,
         imgBitmap},
        {{{1, 2, 3, 255}, {0, 0, 0, 0}, {7, 8, 9, 200}, {0, 0, 0, 1}, {255, 255, 255, 255}, {1, 1, 1, 1}},
         AlphaComplex,
         imgBmpPARGB},
        {{{1, 2, 3, 255}, {0, 0, 0, 0}, {7, 8, 9, 255}, {0, 0, 0, 0}, {0, 0, 0, 0}, {1, 1, 1, 255}},
         AlphaSimple,
         imgBmpPARGB},
    };
    const TemporaryFolder folder;
    for (const auto& row : rows) {
        cPixSheet sheet, back;
        fill(sheet, 3, 2, row.pixels);
        ASSERT_TRUE(sheet.SaveToFile_Bitmap(folder.name(u8"a.bmp"), true, 0, false));
        ASSERT_TRUE(back.LoadPicture_File(folder.name(u8"a.bmp"), 0, 0, true));
        EXPECT_EQ(pixelsOf(back), row.pixels);
        EXPECT_EQ(back.Alpha(), row.alpha);
        EXPECT_EQ(back.ImageType(), row.type);
        ByteArray kept;
        ASSERT_TRUE(back.GetOrginalFormat(kept));
        EXPECT_EQ(bytesOf(kept), readFile(folder.path(u8"a.bmp")));
    }
}

TEST_F(BmpReader, AFailedAllocationLeaksOrLeavesHalfAPicture) {
    const ByteArray data(BmpFile{40, 5, 2, 4, 0, {}, paletteOf(16), Bytes(16, 0x53)}.build());
    setErrorReportHandler({}); // out of memory may be reported or not
    bool hasFailed = false;
    for (long after = 0; after < 1000; ++after) {
        cPixSheet sheet;
        sheet.InitializeDIB(2, 2);
        const AllocationFault fault(after);
        const bool loaded = sheet.LoadPicture_Stream(data);
        EXPECT_EQ(sheet.Handle() != 0, loaded);
        hasFailed |= !loaded;
        if (!fault.hasHappened()) break;
    }
    EXPECT_TRUE(hasFailed);
    const platform::ScopedFault noStore(platform::SeamCall::createDIBSection);
    EXPECT_FALSE(cPixSheet().LoadPicture_Stream(data));
}
