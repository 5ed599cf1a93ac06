// Samples to pixels, where a rule of this reader differs from other readers' or is easily missed; the expected bytes
// were worked out by hand. Everything usual is compared with libpng over all formats, in tests/oracle.
#include "support/PngLoading.h"
#include <string>

using namespace pixkit;
using namespace pixkit::test;

namespace {

class PngPixels : public QuietLoads {};

PngBuilder tRNS(const Bytes& data) {
    return PngBuilder().chunk("tRNS", data);
}
PngBuilder palette(const Bytes& entries) {
    return PngBuilder().chunk("PLTE", entries);
}
PngBuilder paletteAndAlpha(const Bytes& entries, const Bytes& alpha) {
    return PngBuilder().chunk("PLTE", entries).chunk("tRNS", alpha);
}
Pixel grey(std::uint8_t level) {
    return {level, level, level, 255};
}

constexpr Pixel clear = {0, 0, 0, 0};
constexpr Pixel black = {0, 0, 0, 255};

} // namespace

TEST_F(PngPixels, ARuleOfConversionIsNotKept) {
    const Bytes sixEntries = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 200, 100, 50};
    const Bytes alphaOfSixth = {255, 0, 255, 255, 255, 128};
    Bytes tooManyEntries(259 * 3);
    tooManyEntries[765] = 1; // entry 255
    Bytes tooManyAlphas(300, 128);
    tooManyAlphas[255] = 255;
    const struct {
        const char* rule;
        PngImage image;
        Bytes row; // its filter byte first
        PngBuilder before;
        std::vector<Pixel> pixels;
        AlphaTypeEnum alpha = AlphaNone;
    } rows[] = {
        // grey levels
        {"1-bit levels", {3, 1, 1, 0}, {0, 0b01000000}, {}, {black, grey(255), black}},
        {"2-bit levels", {4, 1, 2, 0}, {0, 0b00011011}, {}, {black, grey(85), grey(170), grey(255)}},
        {"4-bit levels", {3, 1, 4, 0}, {0, 0x01, 0xEF}, {}, {black, grey(17), grey(238)}},
        {"16 bits keep the high byte, unrounded",
         {2, 1, 16, 0},
         {0, 0x12, 0xFF, 0xFE, 0xFF},
         {},
         {grey(0x12), grey(0xFE)}},
        {"a grey PLTE is no palette", {1, 1, 8, 0}, {0, 1}, palette(sixEntries), {grey(1)}},
        // transparent grey
        {"8-bit grey: low byte of tRNS",
         {2, 1, 8, 0},
         {0, 0x34, 0x12},
         tRNS({0x12, 0x34}),
         {clear, grey(0x12)},
         AlphaSimple},
        {"2-bit grey: low bits of tRNS",
         {4, 1, 2, 0},
         {0, 0b00011011},
         tRNS({0xFF, 0xFF}),
         {black, grey(85), grey(170), clear},
         AlphaSimple},
        {"16-bit grey: high bytes alone",
         {3, 1, 16, 0},
         {0, 0x12, 0xFF, 0x34, 0x12, 0x12, 0x34},
         tRNS({0x12, 0x34}),
         {clear, grey(0x34), clear},
         AlphaSimple},
        {"no pixel is transparent, but tRNS was there", {1, 1, 8, 0}, {0, 9}, tRNS({0, 8}), {grey(9)}, AlphaSimple},
        {"tRNS one byte short", {1, 1, 8, 0}, {0, 0}, tRNS({0}), {black}},
        {"tRNS longer than needed", {1, 1, 8, 0}, {0, 5}, tRNS({0, 5, 1, 1}), {clear}, AlphaSimple},
        {"a short second tRNS takes the first away", {1, 1, 8, 0}, {0, 5}, tRNS({0, 5}).chunk("tRNS", {5}), {grey(5)}},
        // transparent RGB
        {"8-bit RGB: low bytes of tRNS",
         {2, 1, 8, 2},
         {0, 1, 2, 3, 3, 2, 1},
         tRNS({9, 1, 9, 2, 9, 3}),
         {clear, {1, 2, 3, 255}},
         AlphaSimple},
        {"16-bit RGB: high bytes alone",
         {2, 1, 16, 2},
         {0, 1, 77, 2, 88, 3, 99, 9, 1, 9, 2, 9, 3},
         tRNS({1, 9, 2, 9, 3, 9}),
         {clear, {9, 9, 9, 255}},
         AlphaSimple},
        {"RGB tRNS one byte short", {1, 1, 8, 2}, {0, 0, 0, 0}, tRNS({0, 0, 0, 0, 0}), {black}},
        // palettes
        {"palette with partial alpha, classed simple",
         {3, 1, 8, 3},
         {0, 0, 5, 1},
         paletteAndAlpha(sixEntries, alphaOfSixth),
         {{3, 2, 1, 255}, {25, 50, 100, 128}, clear},
         AlphaSimple},
        {"tRNS shorter than the palette: opaque",
         {2, 1, 4, 3},
         {0, 0x05},
         paletteAndAlpha(sixEntries, {0}),
         {clear, {50, 100, 200, 255}},
         AlphaSimple},
        {"tRNS before PLTE",
         {1, 1, 2, 3},
         {0, 0b01000000},
         tRNS({9, 51}).chunk("PLTE", sixEntries),
         {{1, 1, 0, 51}},
         AlphaSimple},
        {"index beyond a short palette: black, opaque",
         {2, 1, 8, 3},
         {0, 6, 255},
         paletteAndAlpha(sixEntries, Bytes(256, 7)),
         {black, black},
         AlphaSimple},
        {"no PLTE at 1 bit: black and white", {2, 1, 1, 3}, {0, 0b01000000}, {}, {black, grey(255)}},
        {"no PLTE at 2 bits: black", {2, 1, 2, 3}, {0, 0b01110000}, {}, {black, black}},
        {"no PLTE at 8 bits: black", {2, 1, 8, 3}, {0, 1, 255}, {}, {black, black}},
        {"more than 256 entries",
         {2, 1, 8, 3},
         {0, 255, 0},
         paletteAndAlpha(tooManyEntries, tooManyAlphas),
         {{0, 0, 1, 255}, {0, 0, 0, 128}},
         AlphaSimple},
        // alpha channels
        {"premultiplied, truncated",
         {3, 1, 8, 6},
         {0, 100, 101, 255, 127, 255, 254, 253, 1, 255, 255, 255, 254},
         {},
         {{127, 50, 49, 127}, {0, 0, 1, 1}, {254, 254, 254, 254}},
         AlphaComplex},
        {"colour in clear pixels goes",
         {2, 1, 8, 6},
         {0, 9, 9, 9, 0, 1, 2, 3, 255},
         {},
         {clear, {3, 2, 1, 255}},
         AlphaComplex},
        {"grey with alpha",
         {3, 1, 8, 4},
         {0, 200, 128, 200, 0, 200, 255},
         {},
         {{100, 100, 100, 128}, clear, grey(200)},
         AlphaComplex},
        {"16-bit alpha keeps its high byte",
         {1, 1, 16, 6},
         {0, 255, 1, 128, 2, 64, 3, 0x80, 0xFF},
         {},
         {{32, 64, 128, 128}},
         AlphaComplex},
        {"16-bit grey with alpha below 256: clear",
         {2, 1, 16, 4},
         {0, 77, 7, 0, 255, 77, 7, 255, 0},
         {},
         {clear, grey(77)},
         AlphaComplex},
        // tRNS before IHDR is read as that of a grey picture of depth 0
        {"grey 0 is transparent then", {2, 1, 8, 0}, {0, 0, 1}, {}, {clear, grey(1)}, AlphaSimple},
        {"a palette is not padded then",
         {2, 1, 8, 3},
         {0, 0, 5},
         palette(sixEntries),
         {{1, 1, 0, 128}, {50, 100, 200, 255}},
         AlphaSimple},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.rule);
        Bytes data = png(row.image, row.row, row.before);
        if (std::string(row.rule).ends_with(" then")) {
            const Bytes first = tRNS({128, 0xFF}).data();
            data.insert(data.begin() + 8, first.begin() + 8, first.end());
        }
        const Loaded expected{static_cast<std::int32_t>(row.image.width), 1, row.pixels, row.alpha};
        EXPECT_EQ(load(data), expected);
        EXPECT_EQ(load(data, Source::file), expected);
    }
}

TEST_F(PngPixels, AnUnknownFilterStopsThePictureOrChangesItsRow) {
    const PngImage image{2, 3, 8, 0};
    for (const std::uint8_t filter : Bytes{5, 6, 128, 255}) {
        // Row 0 as stored, row 1 adds it (Up), row 2 as stored.
        const Bytes rows = {filter, 1, 2, 2, 10, 10, filter, 200, 201};
        const Loaded expected{2, 3, {grey(1), grey(2), grey(11), grey(12), grey(200), grey(201)}, AlphaNone};
        EXPECT_EQ(load(png(image, rows)), expected) << +filter;
    }
}

TEST_F(PngPixels, FiltersCarryOverOrMissTheirNeighbours) {
    const PngImage image{3, 3, 8, 0};
    const struct {
        const char* filter;
        Bytes rows;
        std::vector<std::uint8_t> levels; // of the last row
    } rows[] = {
        {"Avg takes the sum before it halves", {0, 255, 255, 255, 0, 255, 255, 255, 3, 128, 0, 1}, {255, 255, 0}},
        {"Avg of the first row halves the left", {3, 200, 100, 0}, {200, 200, 100}},
        {"Paeth of the first row takes the left", {4, 200, 100, 1}, {200, 44, 45}},
        {"Up of the first row adds nothing", {2, 200, 100, 1}, {200, 100, 1}},
        {"Sub wraps", {1, 200, 100, 1}, {200, 44, 45}},
        // left 10, above 20, upper-left 15: the upper-left; left = above = upper-left: the left
        {"Paeth prefers the nearest, then the left", {0, 15, 20, 10, 4, 251, 0, 251}, {10, 15, 5}},
    };
    for (const auto& row : rows) {
        const auto height = static_cast<std::uint32_t>(row.rows.size() / 4);
        const Loaded loaded = load(png({3, height, 8, 0}, row.rows));
        ASSERT_EQ(loaded.pixels.size(), height * 3) << row.filter;
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(loaded.pixels[(height - 1) * 3 + i], grey(row.levels[i])) << row.filter << ", pixel " << i;
        }
    }
}

TEST_F(PngPixels, RowsAreStoredTopDown) {
    cPixSheet sheet;
    ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(png({1, 2, 8, 0}, {0, 1, 0, 2}))));
    EXPECT_EQ(sheet.BitsPointer()[0], 2) << "the bottom row comes first in memory";
    EXPECT_EQ(sheet.BitsPointer()[4], 1);
}

TEST_F(PngPixels, InterlacedPassesLandElsewhere) {
    // Every pixel of an 8 x 8 picture names its place; each pass alone carries some of them.
    const Samples place = [](std::size_t x, std::size_t y, std::size_t) { return static_cast<unsigned>(y * 16 + x); };
    for (std::uint32_t width = 1; width <= 9; ++width) {
        for (std::uint32_t height = 1; height <= 9; ++height) {
            const PngImage image{width, height, 8, 0, 0, 0, 1, {0, 1, 2, 3, 4}};
            const Loaded loaded = load(png(image, place));
            ASSERT_EQ(loaded.pixels.size(), width * height);
            for (std::size_t i = 0; i < loaded.pixels.size(); ++i) {
                const auto level = static_cast<std::uint8_t>(place(i % width, i / width, 0));
                ASSERT_EQ(loaded.pixels[i], grey(level)) << width << " x " << height << ", pixel " << i;
            }
        }
    }
    // Data that ends with the first pass: what the others would bring is black.
    const Loaded cut = load(png({2, 2, 8, 0, 0, 0, 1}, {0, 200}));
    EXPECT_EQ(cut, (Loaded{2, 2, {grey(200), black, black, black}, AlphaNone}));
}
