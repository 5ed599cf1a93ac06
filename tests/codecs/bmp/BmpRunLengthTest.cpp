#include "codecs/bmp/BmpRunLength.h"
#include "support/BmpBuilder.h"

namespace pixkit::test {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct Case {
    const char* what;
    bool isRle4;
    std::size_t width;
    Bytes codes;
    std::vector<Bytes> rows; // in the order of the file
};

const Case cases[] = {
    {"runs and the end of a line", false, 4, {3, 7, 1, 8, 0, 0, 4, 9, 0, 1}, {{7, 7, 7, 8}, {9, 9, 9, 9}}},
    {"a line that ends early", false, 4, {2, 7, 0, 0, 1, 8, 0, 0}, {{7, 7, 0, 0}, {8, 0, 0, 0}}},
    {"a full row does not end the line", false, 2, {2, 7, 2, 8, 0, 0, 2, 9}, {{7, 7}, {9, 9}}},
    {"a run over the row's end", false, 3, {1, 5, 255, 6, 0, 0, 1, 7}, {{5, 6, 6}, {7, 0, 0}}},
    {"literals, odd, padded", false, 5, {0, 3, 1, 2, 3, 99, 1, 4, 0, 0, 1, 5}, {{1, 2, 3, 4, 0}, {5, 0, 0, 0, 0}}},
    {"literals, even", false, 5, {0, 4, 1, 2, 3, 4, 1, 5}, {{1, 2, 3, 4, 5}}},
    {"literals over the row's end", false, 2, {0, 4, 1, 2, 3, 4, 0, 0, 1, 5}, {{1, 2}, {5, 0}}},
    {"the data ends in literals", false, 5, {1, 9, 0, 4, 1, 2}, {{9, 1, 2, 0, 0}, {0, 0, 0, 0, 0}}},
    {"the data ends before literals", false, 3, {1, 9, 0, 3}, {{9, 0, 0}}},
    {"the data ends in a code", false, 3, {1, 9, 2}, {{9, 0, 0}}},
    {"no data", false, 2, {}, {{0, 0}, {0, 0}}},
    {"the end of the bitmap before its end", false, 2, {1, 9, 0, 1, 2, 8}, {{9, 0}, {0, 0}}},
    {"a delta to the right", false, 4, {1, 9, 0, 2, 2, 0, 1, 8}, {{9, 0, 0, 8}}},
    {"a delta to the next row", false, 4, {1, 9, 0, 2, 1, 1, 2, 8}, {{9, 0, 0, 0}, {0, 0, 8, 8}}},
    {"a delta over rows", false, 2, {1, 9, 0, 2, 0, 3, 1, 8}, {{9, 0}, {0, 0}, {0, 0}, {0, 8}}},
    {"a delta over the row's end", false, 2, {0, 2, 9, 0, 1, 8, 0, 0, 1, 7}, {{0, 0}, {7, 0}}},
    {"a delta beyond the last row", false, 2, {1, 9, 0, 2, 0, 200, 1, 8}, {{9, 0}, {0, 0}}},
    {"the data ends in a delta", false, 2, {1, 9, 0, 2, 1}, {{9, 0}, {0, 0}}},
    {"two deltas in turn", false, 2, {0, 2, 0, 1, 0, 2, 1, 1, 1, 5}, {{0, 0}, {0, 0}, {0, 5}}},

    {"4: a run of two colours", true, 6, {5, 0x7A, 1, 0x30}, {{7, 10, 7, 10, 7, 3}}},
    {"4: a run over the row's end", true, 3, {9, 0x7A, 0, 0, 1, 0x50}, {{7, 10, 7}, {5, 0, 0}}},
    {"4: literals, one byte and padding", true, 4, {0, 3, 0x12, 0x34, 1, 0x50}, {{1, 2, 3, 5}}},
    {"4: literals, three bytes and padding",
     true,
     7,
     {0, 5, 0x12, 0x34, 0x56, 0x99, 2, 0xBC},
     {{1, 2, 3, 4, 5, 11, 12}}},
    {"4: literals over the row's end", true, 3, {0, 5, 0x12, 0x34, 0x56, 0, 0, 0, 1, 0x70}, {{1, 2, 3}, {7, 0, 0}}},
    {"4: the data ends in literals", true, 6, {0, 6, 0x12, 0x34}, {{1, 2, 3, 4, 0, 0}}},
};

TEST(BmpRunLength, ACodePutsPixelsInTheWrongPlace) {
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        BmpRunLength runLength(test.codes, test.isRle4);
        for (const Bytes& expected : test.rows) {
            Bytes row(test.width, 0xEE);
            runLength.nextRow(row);
            EXPECT_EQ(row, expected);
        }
    }
}

TEST(BmpRunLength, APictureIsNotWhatItsCodesSay) {
    const Bytes palette = {0, 0, 1, 0, 10, 11, 12, 0, 20, 21, 22, 0};
    const Pixel p0 = {0, 0, 1, 255}, p1 = {10, 11, 12, 255}, p2 = {20, 21, 22, 255};
    const Bytes codes8 = {2, 1, 0, 0, 1, 2, 0, 1};
    const Bytes codes4 = {2, 0x11, 0, 0, 1, 0x20, 0, 1};
    const std::vector<Pixel> bottomUp = {p2, p0, p1, p1}, topDown = {p1, p1, p2, p0};
    const struct {
        const char* what;
        BmpFile file;
        std::vector<Pixel> pixels;
    } rows[] = {
        {"RLE8", {40, 2, 2, 8, 1, {}, palette, codes8, 3}, bottomUp},
        {"RLE8, top-down, which the format does not have", {40, 2, -2, 8, 1, {}, palette, codes8, 3}, topDown},
        {"RLE4", {40, 2, 2, 4, 2, {}, palette, codes4, 3}, bottomUp},
        {"RLE8 with an OS/2 header", {64, 2, 2, 8, 1, {}, palette, codes8, 3}, bottomUp},
        {"an index beyond the palette",
         {40, 2, 1, 8, 1, {}, palette, {1, 3, 1, 255}, 3},
         {{0, 0, 0, 255}, {0, 0, 0, 255}}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(loadBmp(row.file),
                  (LoadedBmp{2, row.file.height < 0 ? 2 : row.file.height, row.pixels, AlphaNone, imgBitmap}))
            << row.what;
}

// Two bytes of codes describe at most 255 pixels.
TEST(BmpRunLength, AStoreIsTakenThatTheCodesCannotFill) {
    const auto load = [](std::int32_t width, std::int32_t height, std::size_t bytes) {
        return loadBmp(BmpFile{40, width, height, 8, 1, {}, Bytes(4), Bytes(bytes, 3), 1}).width;
    };
    EXPECT_EQ(load(255, 2, 4), 255);
    EXPECT_EQ(load(256, 2, 4), 0);
    EXPECT_EQ(load(255, 2, 3), 0);
    EXPECT_EQ(load(20000, 20000, 4), 0);
}

} // namespace
} // namespace pixkit::test
