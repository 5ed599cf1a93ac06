// What is recognised, and what pixels become of every type, depth, placement and alpha rule.
#include "codecs/tga/TgaBuilder.h"
#include "codecs/tga/cTGAparser.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class TgaReader : public QuietLoads {};

const Loaded nothing;

struct Case {
    const char* fault; // what goes wrong when the row fails
    Bytes data;
    Loaded expected;
};

void expectAll(const std::vector<Case>& rows) {
    for (const Case& row : rows)
        EXPECT_EQ(loadTga(row.data), row.expected) << row.fault;
}

Loaded onePixel(Pixel pixel, AlphaTypeEnum alpha = AlphaNone) {
    return {1, 1, {pixel}, alpha};
}

// 2 x 1 so that an opaque pixel tells alpha 0 from alpha unused.
Loaded twoPixels(Pixel left, Pixel right, AlphaTypeEnum alpha = AlphaNone) {
    return {2, 1, {left, right}, alpha};
}

Tga mapped(std::uint8_t entrySize, const Bytes& map, const Bytes& pixels, std::uint8_t entryBytes) {
    return {.type = 1,
            .depth = 8,
            .width = static_cast<std::uint16_t>(pixels.size()),
            .pixels = pixels,
            .mapType = 1,
            .mapLength = static_cast<std::uint16_t>(map.size() / entryBytes),
            .entrySize = entrySize,
            .map = map};
}

} // namespace

TEST_F(TgaReader, HeadersThatMakeNoSenseAreDecodedOrGoodOnesRefused) {
    const Tga pixel{.pixels = {1, 2, 3}};
    const Loaded loaded = onePixel({1, 2, 3, 255});
    const auto with = [](Tga tga, auto change) {
        change(tga);
        return tga.data() + Bytes(40); // enough for whatever the change asks for
    };
    std::vector<Case> rows = {
        {"plain", with(pixel, [](Tga&) {}), loaded},
        {"width 0", with(pixel, [](Tga& t) { t.width = 0; }), nothing},
        {"height 0", with(pixel, [](Tga& t) { t.height = 0; }), nothing},
        {"map type 2 and a map declared: the map is not there",
         with(pixel, [](Tga& t) { t.mapType = 2, t.mapLength = 9999, t.entrySize = 24; }), loaded},
        {"a map beside true colour is skipped",
         with(pixel,
              [](Tga& t) {
                  t.mapType = 1, t.mapLength = 1, t.entrySize = 32, t.map = {9, 9, 9, 9};
              }),
         loaded},
        {"the first index counts as entries there too",
         with(pixel,
              [](Tga& t) { t.mapType = 1, t.firstEntry = 2, t.mapLength = 1, t.entrySize = 15, t.map = Bytes(6); }),
         loaded},
        {"map without entries", with(pixel, [](Tga& t) { t.mapType = 1, t.entrySize = 24; }), nothing},
        {"entries of 12 bits", with(pixel, [](Tga& t) { t.mapType = 1, t.mapLength = 1, t.entrySize = 12; }), nothing},
        {"a map larger than the data",
         with(pixel, [](Tga& t) { t.mapType = 1, t.mapLength = 65535, t.entrySize = 24; }), nothing},
        {"mapped without a map", with(pixel, [](Tga& t) { t.type = 1, t.depth = 8; }), nothing},
        {"mapped with map type 2",
         with(pixel, [](Tga& t) { t.type = 9, t.depth = 8, t.mapType = 2, t.mapLength = 1, t.entrySize = 24; }),
         nothing},
        {"an ID is skipped", with(pixel, [](Tga& t) { t.id = Bytes(22, 'x'); }), loaded},
    };
    for (unsigned type = 0; type < 256; ++type) {
        const bool isKnown = type == 2 || type == 3 || type == 10 || type == 11;
        const bool isRunLength = type >= 8; // then 1 is a raw packet of two pixels
        rows.push_back({"image type",
                        with(pixel,
                             [&](Tga& t) {
                                 t.type = static_cast<std::uint8_t>(type);
                                 if (isRunLength) t.pixels = {0, 1, 2, 3};
                             }),
                        isKnown ? loaded : nothing});
    }
    for (unsigned depth = 0; depth < 256; ++depth) {
        const bool isKnown = depth == 8 || depth == 15 || depth == 16 || depth == 24 || depth == 32;
        const auto setDepth = [&](Tga& t) { t.depth = static_cast<std::uint8_t>(depth); };
        EXPECT_EQ(loadTga(with(pixel, setDepth)).width, isKnown ? 1 : 0) << depth;
        // Indexes have 8 bits.
        const Tga indexed = mapped(24, {1, 2, 3}, {0}, 3);
        EXPECT_EQ(loadTga(with(indexed, setDepth)).width, depth == 8 ? 1 : 0) << depth;
    }
    expectAll(rows);
}

TEST_F(TgaReader, TheSizeEstimateIsOffByOne) {
    const Bytes pixel = Tga{.pixels = {1, 2, 3}}.data();
    ASSERT_EQ(pixel.size(), 21U);
    EXPECT_EQ(loadTga(pixel).width, 1);
    EXPECT_EQ(loadTga(Bytes(pixel.begin(), pixel.end() - 1)).width, 0);
    // The footer is part of the estimate, so that it is not taken for pixels; its case does not count, and a byte or
    // four more may follow it.
    for (const std::string_view signature : {"TRUEVISION-XFILE.", "truevision-xfile.", "TrueVision-XFile."}) {
        EXPECT_EQ(loadTga(pixel + footer(0, signature)).width, 1) << signature;
        for (const std::size_t behind : {0U, 1U, 4U, 5U}) {
            Bytes swallowed = Tga{.height = 9, .pixels = Bytes(27 - 22)}.data() + footer(0, signature);
            swallowed.resize(swallowed.size() + behind);
            EXPECT_EQ(loadTga(swallowed).height, behind < 5 ? 0 : 9) << signature << behind;
        }
    }
    EXPECT_EQ(loadTga(Tga{.height = 9, .pixels = Bytes(1)}.data() + footer(0, "TRUEVISION-XFILE!")).height, 9);
    // Arrays below 20 bytes never come to the reader, so it is asked itself.
    const Bytes smallest = Tga{.depth = 8, .pixels = {7}}.data();
    cPixSheet sheet;
    EXPECT_FALSE(cTGAparser().LoadStream(std::span(smallest).first(18), sheet, 0));
    EXPECT_TRUE(cTGAparser().LoadStream(smallest, sheet, 0));
}

TEST_F(TgaReader, SamplesOfADepthAreMisread) {
    const auto pixel = [](std::uint8_t type, std::uint8_t depth, Bytes sample) {
        return Tga{.type = type, .depth = depth, .pixels = std::move(sample)}.data();
    };
    expectAll({
        {"gray 8", pixel(3, 8, {77}), onePixel({77, 77, 77, 255})},
        {"type 2 with 8 bits is gray", pixel(2, 8, {78}), onePixel({78, 78, 78, 255})},
        {"type 3 with 24 bits is colour", pixel(3, 24, {1, 2, 3}), onePixel({1, 2, 3, 255})},
        {"24", pixel(2, 24, {10, 20, 30}), onePixel({10, 20, 30, 255})},
        {"32, alpha 0 everywhere is no alpha", pixel(2, 32, {10, 20, 30, 0}), onePixel({10, 20, 30, 255})},
        {"32, alpha 255 everywhere is no alpha", pixel(2, 32, {10, 20, 30, 255}), onePixel({10, 20, 30, 255})},
        {"32, straight", pixel(2, 32, {200, 100, 50, 128}), onePixel({100, 50, 25, 128}, AlphaComplex)},
        {"32, premultiplied already", pixel(2, 32, {100, 50, 25, 128}), onePixel({100, 50, 25, 128}, AlphaComplex)},
        // Red 1, green 2, blue 31: x * 8 + (x AND 7).
        {"15", pixel(2, 15, {0x5F, 0x04}), onePixel({255, 18, 9, 255})},
        {"15 ignores bit 15", pixel(2, 15, {0x5F, 0x84}), onePixel({255, 18, 9, 255})},
        {"16, no alpha bits: bit 15 is ignored", pixel(2, 16, {0x5F, 0x84}), onePixel({255, 18, 9, 255})},
        {"five bits of 8", pixel(2, 16, {0x08, 0x00}), onePixel({64, 0, 0, 255})},
    });
}

TEST_F(TgaReader, Bit15IsTheOppositeOfAlpha) {
    const auto picture = [](std::uint8_t depth, std::uint8_t descriptor) {
        return Tga{.depth = depth, .width = 2, .descriptor = descriptor, .pixels = {0x1F, 0x00, 0x1F, 0x80}}.data();
    };
    const Loaded opaque = twoPixels({255, 0, 0, 255}, {255, 0, 0, 255});
    const Loaded keyed = twoPixels({255, 0, 0, 255}, {0, 0, 0, 0}, AlphaSimple);
    expectAll({
        {"no alpha bits", picture(16, 0), opaque},
        {"no alpha bits, but other bits set", picture(16, 0x80), opaque},
        {"one alpha bit", picture(16, 1), keyed},
        {"any alpha bits", picture(16, 16), keyed},
        {"15 bits never", picture(15, 1), opaque},
        {"forbidden by attributes type 2", withExtension(picture(16, 1), 2), opaque},
        {"forbidden by attributes type 0", withExtension(picture(16, 1), 0), opaque},
        {"allowed by attributes type 3", withExtension(picture(16, 1), 3), keyed},
        {"allowed by attributes type 4", withExtension(picture(16, 1), 4), keyed},
        {"an area of another size says nothing", withExtension(picture(16, 1), 2, 494), keyed},
        {"an area that is too far for its size", picture(16, 1) + footer(22), keyed},
        {"an area before the data", picture(16, 1) + footer(0xFFFFFFF0), keyed},
        {"no area", picture(16, 1) + footer(0), keyed},
        {"32-bit pixels keep alpha all the same",
         withExtension(Tga{.depth = 32, .width = 2, .pixels = {9, 9, 9, 255, 9, 9, 9, 0}}.data(), 0),
         twoPixels({9, 9, 9, 255}, {0, 0, 0, 0}, AlphaSimple)},
    });
}

// The place of the picture in the caller's array counts on one side of the comparison only.
TEST_F(TgaReader, AnAreaNearTheEndOfAnEmbeddedPictureIsFound) {
    const Bytes data =
        withExtension(Tga{.depth = 16, .width = 2, .descriptor = 1, .pixels = {0x1F, 0x00, 0x1F, 0x80}}.data(), 2);
    EXPECT_EQ(loadTga(data, 0).alpha, AlphaNone);
    EXPECT_EQ(loadTga(data, 25).alpha, AlphaNone) << "the footer's 26 bytes are what lies behind the area";
    EXPECT_EQ(loadTga(data, 26).alpha, AlphaSimple);
    EXPECT_EQ(loadTga(data, 1000).alpha, AlphaSimple);
}

TEST_F(TgaReader, ColourMapsAreReadFromTheWrongPlaceOrLayout) {
    Tga first = mapped(24, {9, 9, 9, 8, 8, 8, 1, 2, 3, 4, 5, 6}, {0, 1, 2}, 3);
    first.firstEntry = 2;
    first.mapLength = 2;
    Tga topDown = mapped(24, {1, 2, 3, 4, 5, 6}, {0, 1}, 3);
    topDown.width = 1;
    topDown.height = 2;
    Tga bottomUp = topDown;
    topDown.descriptor = 32;
    Tga large = mapped(8, Bytes(300, 5), {255}, 1);
    large.map[255] = 6;
    Tga runs = mapped(24, {1, 2, 3, 4, 5, 6}, {0x81, 1, 0, 0}, 3);
    runs.type = 9;
    runs.width = 3;
    const Bytes keys = {0x1F, 0x00, 0x1F, 0x80};
    const Bytes quads = {200, 100, 50, 255, 200, 100, 50, 0};
    expectAll({
        {"8-bit entries are gray", mapped(8, {10, 20}, {1, 0}, 1).data(),
         twoPixels({20, 20, 20, 255}, {10, 10, 10, 255})},
        {"15", mapped(15, keys, {0, 1}, 2).data(), twoPixels({255, 0, 0, 255}, {255, 0, 0, 255})},
        {"16: bit 15 counts without alpha bits", mapped(16, keys, {0, 1}, 2).data(),
         twoPixels({255, 0, 0, 255}, {0, 0, 0, 0}, AlphaSimple)},
        {"16 forbidden", withExtension(mapped(16, keys, {0, 1}, 2).data(), 2),
         twoPixels({255, 0, 0, 255}, {255, 0, 0, 255})},
        {"24", mapped(24, {1, 2, 3, 4, 5, 6}, {1, 0}, 3).data(), twoPixels({4, 5, 6, 255}, {1, 2, 3, 255})},
        {"32", mapped(32, quads, {0, 1}, 4).data(), twoPixels({200, 100, 50, 255}, {0, 0, 0, 0}, AlphaSimple)},
        {"32 forbidden", withExtension(mapped(32, quads, {0, 1}, 4).data(), 1),
         twoPixels({200, 100, 50, 255}, {200, 100, 50, 255})},
        {"index beyond the map", mapped(24, {1, 2, 3}, {0, 7}, 3).data(), twoPixels({1, 2, 3, 255}, {0, 0, 0, 255})},
        {"index beyond a map with alpha", mapped(32, quads, {0, 255}, 4).data(),
         twoPixels({200, 100, 50, 255}, {0, 0, 0, 0}, AlphaSimple)},
        {"a first index moves the map and not the indexes",
         first.data(),
         {3, 1, {{1, 2, 3, 255}, {4, 5, 6, 255}, {0, 0, 0, 255}}, AlphaNone}},
        {"top row first", topDown.data(), {1, 2, {{1, 2, 3, 255}, {4, 5, 6, 255}}, AlphaNone}},
        {"bottom row first", bottomUp.data(), {1, 2, {{4, 5, 6, 255}, {1, 2, 3, 255}}, AlphaNone}},
        {"more than 256 entries", large.data(), onePixel({6, 6, 6, 255})},
        {"run-length", runs.data(), {3, 1, {{4, 5, 6, 255}, {4, 5, 6, 255}, {1, 2, 3, 255}}, AlphaNone}},
    });
}

TEST_F(TgaReader, RowsOrColumnsAreInTheWrongOrder) {
    const Bytes square = {1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4};
    const auto picture = [&](std::uint8_t descriptor) {
        return Tga{.width = 2, .height = 2, .descriptor = descriptor, .pixels = square}.data();
    };
    const Pixel one{1, 1, 1, 255}, two{2, 2, 2, 255}, three{3, 3, 3, 255}, four{4, 4, 4, 255};
    expectAll({
        {"bottom row first", picture(0), {2, 2, {three, four, one, two}, AlphaNone}},
        {"top row first", picture(32), {2, 2, {one, two, three, four}, AlphaNone}},
        {"bit 4 means nothing", picture(16), {2, 2, {three, four, one, two}, AlphaNone}},
        {"bit 7 means nothing", picture(128), {2, 2, {three, four, one, two}, AlphaNone}},
    });
}

// Bit 6 fills each row from byte width * 4 - 5 in steps of -4: one byte lower than the mirrored place, across the rows
// of the store. Pixels without alpha leave a 0 where theirs would be.
TEST_F(TgaReader, RightToLeftPixelsAreNotOneByteLow) {
    const Tga row{.width = 3, .descriptor = 64, .pixels = {1, 2, 3, 4, 5, 6, 7, 8, 9}};
    // Store: 7 8 9 0  4 5 6 0  1 2 3 0, less its first byte. The alpha bytes are then 4, 1 and, at the end, 0; the
    // colours above them prove straight data.
    const Loaded rowLoaded{3, 1, {{0, 0, 0, 4}, {0, 0, 0, 1}, {0, 0, 0, 0}}, AlphaComplex};
    const Tga quads{.depth = 32,
                    .width = 2,
                    .height = 2,
                    .descriptor = 64,
                    .pixels = {1, 1, 1, 255, 2, 2, 2, 200, 3, 3, 3, 100, 255, 4, 4, 50}};
    // Bottom row: 2 2 2 200 1 1 1 255, top row: 255 4 4 50 3 3 3 100; one byte lower the bottom row's last byte is the
    // top row's first.
    Tga run = row;
    run.type = 10;
    run.pixels = {0x02, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    Tga down = quads;
    down.descriptor = 64 | 32;
    down.pixels = {3, 3, 3, 100, 255, 4, 4, 50, 1, 1, 1, 255, 2, 2, 2, 200};
    expectAll({
        {"24 bits", row.data(), rowLoaded},
        {"24 bits, run-length", run.data(), rowLoaded},
        {"32 bits", quads.data(), {2, 2, {{0, 0, 0, 3}, {0, 0, 0, 0}, {0, 0, 0, 1}, {1, 1, 255, 255}}, AlphaComplex}},
        {"32 bits, top row first", down.data(), loadTga(quads.data())},
        {"one pixel: its first byte would lie before the store",
         Tga{.depth = 32, .descriptor = 64, .pixels = {1, 2, 3, 4}}.data(), onePixel({2, 3, 4, 255})},
        {"one gray pixel", Tga{.type = 3, .depth = 8, .descriptor = 64, .pixels = {7}}.data(),
         onePixel({7, 7, 0, 255})},
        {"palette",
         [] {
             Tga tga = mapped(24, {1, 2, 3}, {0}, 3);
             tga.descriptor = 64;
             return tga.data();
         }(),
         onePixel({2, 3, 0, 255})},
    });
}

TEST_F(TgaReader, PacketsAreCutAtRowsOrRunOverTheEnd) {
    const auto gray = [](std::uint16_t width, std::uint16_t height, const Bytes& packets, std::uint8_t descriptor = 0) {
        return Tga{
            .type = 11, .depth = 8, .width = width, .height = height, .descriptor = descriptor, .pixels = packets};
    };
    const auto grays = [](std::int32_t width, std::int32_t height, const Bytes& topRowFirst) {
        Loaded loaded{width, height, {}, AlphaNone};
        for (const std::uint8_t g : topRowFirst)
            loaded.pixels.push_back({g, g, g, 255});
        return loaded;
    };
    // Data is not read beyond its end: nothing may follow what these rows give.
    const auto row = [](const char* fault, const Tga& tga, const Loaded& expected) {
        return Case{fault, tga.data(), expected};
    };
    expectAll({
        row("a run across rows", gray(2, 2, {0x83, 5}), grays(2, 2, {5, 5, 5, 5})),
        row("a raw packet across rows", gray(2, 2, {0x03, 1, 2, 3, 4}), grays(2, 2, {3, 4, 1, 2})),
        row("both, top row first", gray(3, 2, {0x83, 5, 0x01, 1, 2}, 32), grays(3, 2, {5, 5, 5, 5, 1, 2})),
        row("both, bottom row first", gray(3, 2, {0x01, 1, 2, 0x83, 5}), grays(3, 2, {5, 5, 5, 1, 2, 5})),
        row("a run over the end", gray(2, 1, {0xFF, 5}), grays(2, 1, {5, 5})),
        row("a raw packet over the end, the rest not there", gray(2, 1, {0x7F, 5, 6}), grays(2, 1, {5, 6})),
        row("packets behind the end", gray(2, 1, {0x81, 5, 0x81, 6}), grays(2, 1, {5, 5})),
        row("a run without its pixel", gray(2, 1, {0x00, 5, 0x80}), nothing),
        row("a raw packet that is short", gray(3, 1, {0x80, 5, 0x01, 6}), nothing),
        row("a packet is missing", gray(3, 1, {0x01, 5, 6}), nothing),
    });
    const Tga wide{.type = 10, .depth = 32, .width = 2, .pixels = {0x81, 100, 50, 25, 128}};
    EXPECT_EQ(loadTga(wide.data()), twoPixels({100, 50, 25, 128}, {100, 50, 25, 128}, AlphaComplex));
    Tga keyed{.type = 10, .depth = 16, .width = 2, .descriptor = 1, .pixels = {0x01, 0x1F, 0x00, 0x1F, 0x80}};
    EXPECT_EQ(loadTga(keyed.data()), twoPixels({255, 0, 0, 255}, {0, 0, 0, 0}, AlphaSimple));
}

TEST_F(TgaReader, MemoryIsTakenForAPictureThatTheDataCannotFill) {
    // One run of 128 pixels takes 1 + depth / 8 bytes at best.
    const auto gray = [](std::uint16_t width, std::uint16_t height, std::size_t packets) {
        Bytes data = Tga{.type = 11, .depth = 8, .width = width, .height = height}.data();
        for (std::size_t i = 0; i < packets; ++i)
            data.insert(data.end(), {0xFF, 9});
        return data;
    };
    EXPECT_EQ(loadTga(gray(128, 3, 3)).width, 128);
    EXPECT_EQ(loadTga(gray(129, 3, 4)).width, 129);
    for (const Bytes& tooShort : {gray(129, 3, 3), gray(65535, 65535, 100)}) {
        cPixSheet sheet;
        const platform::ScopedFault once(platform::SeamCall::createDIBSection, 0, 1);
        EXPECT_FALSE(sheet.LoadPicture_Stream(ByteArray(tooShort)));
        EXPECT_FALSE(sheet.LoadPicture_Stream(ByteArray(gray(128, 3, 3)))) << "the one refusal was used up before";
    }
    // Raw data of a size that no 32 bits count.
    EXPECT_EQ(loadTga(Tga{.depth = 32, .width = 65535, .height = 65535, .pixels = Bytes(100)}.data()).width, 0);
}

TEST_F(TgaReader, AFailingMachineLeavesHalfAPicture) {
    const ByteArray array(Tga{.width = 2, .pixels = {1, 2, 3, 4, 5, 6}}.data());
    cPixSheet sheet;
    {
        const platform::ScopedFault fault(platform::SeamCall::createDIBSection);
        EXPECT_FALSE(sheet.LoadPicture_Stream(array));
        EXPECT_EQ(sheet.Handle(), 0);
        EXPECT_EQ(sheet.ImageType(), imgError);
    }
    EXPECT_TRUE(sheet.LoadPicture_Stream(array));
}

TEST_F(TgaReader, FilesAreReadUnlikeArrays) {
    const TemporaryFolder folder;
    const Bytes data =
        withExtension(Tga{.depth = 32, .width = 2, .pixels = {1, 2, 3, 255, 200, 100, 50, 128}}.data(), 3);
    writeFile(folder.path(u8"a.tga"), data);
    cPixSheet sheet;
    ASSERT_TRUE(sheet.LoadPicture_File(folder.name(u8"a.tga"), 32, 32, true));
    EXPECT_EQ(sheet.ImageType(), imgTGA);
    EXPECT_EQ(pixelsOf(sheet), loadTga(data).pixels);
    ByteArray kept;
    ASSERT_TRUE(sheet.GetOrginalFormat(kept));
    EXPECT_EQ(bytesOf(kept), data);
    EXPECT_TRUE(sheet.LoadPicture_FromOrignalFormat());
}
