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
