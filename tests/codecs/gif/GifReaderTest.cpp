// What is recognised, cut out and shown of a GIF, and what of one that is odd or damaged.
#include "codecs/gif/cGIFparser.h"
#include "coding/lzw/LzwDecoder.h"
#include "platform/faults.h"
#include "support/AllocationFault.h"
#include "support/GifBuilder.h"
#include "support/PngLoading.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class GifReader : public QuietLoads {};

const Loaded nothing;

Loaded loadGif(const Bytes& data) {
    cPixSheet sheet;
    sheet.InitializeDIB(3, 2);
    const bool loaded = sheet.LoadPicture_Stream(ByteArray(data));
    EXPECT_EQ(sheet.Handle() != 0, loaded);
    EXPECT_EQ(sheet.ImageType(), loaded ? imgGIF : imgError);
    return {sheet.Width(), sheet.Height(), pixelsOf(sheet), sheet.Alpha()};
}

// Four colours, the first a gray that another entry has when the table is made of grays.
const Bytes colors = {2, 2, 2, 10, 20, 30, 40, 50, 60, 70, 80, 90};
const Bytes otherColors = {9, 8, 7, 9, 8, 7, 9, 8, 7, 9, 8, 7};
Pixel colorOf(int index, const Bytes& table = colors) {
    const std::size_t at = static_cast<std::size_t>(index) * 3;
    return {table[at + 2], table[at + 1], table[at], 255};
}

const std::vector<int> indexes = {0, 1, 2, 3, 3, 3, 2, 1, 0, 0, 2, 2};

Loaded shown(std::int32_t width, std::int32_t height, const std::vector<int>& seen, int transparent = -1,
             const Bytes& table = colors) {
    Loaded loaded{width, height, {}, transparent < 0 ? AlphaNone : AlphaSimple};
    for (const int index : seen)
        loaded.pixels.push_back(index == transparent ? Pixel{0, 0, 0, 0} : colorOf(index, table));
    return loaded;
}

Gif plain() {
    return {.width = 4, .height = 3, .codes = lzw(indexes, 2), .global = colors};
}

Gif changed(const std::function<void(Gif&)>& change) {
    Gif gif = plain();
    change(gif);
    return gif;
}

struct Case {
    const char* fault; // what goes wrong when the row fails
    Bytes data;
    Loaded expected;
};

void expectAll(const std::vector<Case>& rows) {
    for (const Case& row : rows)
        EXPECT_EQ(loadGif(row.data), row.expected) << row.fault;
}

} // namespace

TEST_F(GifReader, TheFirstImageIsNotWhatComesOut) {
    const Loaded picture = shown(4, 3, indexes);
    const Bytes comment = {0x21, 0xFE, 3, 0x21, 0x2C, 0x3B, 1, 7, 0};
    const Bytes application = Bytes{0x21, 0xFF, 11} + Bytes(11, 'N') + Bytes{3, 1, 0, 0, 0};
    const Bytes plainText = Bytes{0x21, 0x01, 12} + Bytes(12, 1) + Bytes{2, 'a', 'b', 0};
    const Gif second{.width = 2, .height = 1, .codes = lzw({1, 1}, 2), .local = otherColors};
    Bytes secondImage = second.data();
    secondImage.erase(secondImage.begin(), secondImage.begin() + 13);
    expectAll({
        {"plain", plain().data(), picture},
        {"capitals", changed([](Gif& g) { g.signature = "GIF89A"; }).data(), picture},
        {"87a", changed([](Gif& g) { g.signature = "gif87a"; }).data(), picture},
        {"88a", changed([](Gif& g) { g.signature = "GIF88a"; }).data(), nothing},
        {"a local table alone", changed([](Gif& g) { g.local = std::exchange(g.global, {}); }).data(), picture},
        {"the local table counts", changed([](Gif& g) { g.local = std::exchange(g.global, otherColors); }).data(),
         picture},
        {"no table", changed([](Gif& g) { g.global = {}; }).data(), nothing},
        {"extensions and zeros",
         changed([&](Gif& g) {
             g.before = Bytes{0, 0} + comment + application + plainText + graphicControl(-1) + Bytes{0};
         }).data(),
         picture},
        {"a block that is none", changed([](Gif& g) {
                                     g.before = {0x22, 0};
                                 }).data(),
         nothing},
        {"the end before an image", changed([](Gif& g) { g.before = {0x3B}; }).data(), nothing},
        {"animation", changed([&](Gif& g) { g.after = graphicControl(2) + secondImage; }).data(), picture},
        {"no trailer", changed([](Gif& g) { g.after = {}; }).data(), picture},
        {"rubbish behind", changed([](Gif& g) { g.after = Bytes(50, 0x99); }).data(), picture},
        {"no screen", changed([](Gif& g) { g.screenWidth = g.screenHeight = 0; }).data(), picture},
        {"blocks of one byte", changed([](Gif& g) { g.blockSize = 1; }).data(), picture},
        {"interlaced", changed([](Gif& g) { g.width = 1, g.height = 12, g.interlaced = true; }).data(),
         // rows 0, 8; 4; 2, 6, 10; 1, 3, 5, 7, 9, 11
         shown(1, 12, {0, 2, 3, 1, 2, 0, 3, 0, 1, 2, 3, 2})},
        {"width 0", changed([](Gif& g) { g.width = 0; }).data(), nothing},
        {"height 0", changed([](Gif& g) { g.height = 0; }).data(), nothing},
        {"both 0", changed([](Gif& g) { g.width = g.height = 0; }).data(), nothing},
        {"huge", changed([](Gif& g) { g.width = g.height = 65535; }).data(), nothing},
        {"more than the codes can fill", changed([](Gif& g) { g.width = g.height = 5000; }).data(), nothing},
    });
}

TEST_F(GifReader, TransparencyTouchesOtherPixelsOrColours) {
    const auto with = [](int transparent, Bytes table = colors) {
        return changed([&](Gif& g) { g.global = std::move(table), g.before = graphicControl(transparent); }).data();
    };
    const auto firstColour = [](Bytes three) {
        Bytes table = colors;
        std::copy(three.begin(), three.end(), table.begin());
        return table;
    };
    const Bytes white(12, 255);
    std::vector<Case> rows = {
        {"twice the same colour", with(1, white), shown(4, 3, indexes, 1, white)},
        {"entry 0 is black", with(2, firstColour({0, 0, 0})), shown(4, 3, indexes, 2, firstColour({0, 0, 0}))},
        {"entry 0 is gray beyond the table", with(2, firstColour({9, 9, 9})),
         shown(4, 3, indexes, 2, firstColour({9, 9, 9}))},
        {"entry 0 is almost gray", with(2, firstColour({2, 2, 1})), shown(4, 3, indexes, 2, firstColour({2, 2, 1}))},
        {"an index that no pixel has, beyond the table", with(200), shown(4, 3, indexes, 200)},
        {"the last control extension counts",
         changed([](Gif& g) { g.before = graphicControl(1) + graphicControl(3); }).data(), shown(4, 3, indexes, 3)},
        {"the last one says none", changed([](Gif& g) { g.before = graphicControl(1) + graphicControl(-1); }).data(),
         shown(4, 3, indexes)},
        {"one that lies about its length",
         changed([](Gif& g) { g.before = graphicControl(1), g.before[2] = 200, g.before[7] = 77; }).data(),
         shown(4, 3, indexes, 1)},
        {"one after the image", changed([](Gif& g) { g.after = graphicControl(1) + Bytes{0x3B}; }).data(),
         shown(4, 3, indexes)},
        {"with a local table",
         changed([](Gif& g) { g.before = graphicControl(2), g.local = std::exchange(g.global, otherColors); }).data(),
         shown(4, 3, indexes, 2)},
        {"everywhere",
         Gif{.width = 3,
             .height = 2,
             .codes = lzw(std::vector<int>(6, 1), 2),
             .global = colors,
             .before = graphicControl(1)}
             .data(),
         shown(3, 2, std::vector<int>(6, 1), 1)},
    };
    for (int transparent = 0; transparent < 4; ++transparent)
        rows.push_back({"each index", with(transparent), shown(4, 3, indexes, transparent)});
    expectAll(rows);
}

TEST_F(GifReader, EveryGrayAsTheFirstColourOfEveryTable) {
    for (const int size : {2, 16, 256}) {
        unsigned codeSize = 2;
        while (1 << codeSize < size)
            ++codeSize;
        for (int gray = 0; gray < 256; gray += size == 256 ? 5 : 51) {
            Bytes table;
            std::vector<int> all;
            for (int i = 0; i < size; ++i) {
                all.push_back(i);
                table = table + Bytes{static_cast<std::uint8_t>(i * 3), static_cast<std::uint8_t>(i + 7), 99};
            }
            table[0] = table[1] = table[2] = static_cast<std::uint8_t>(gray);
            for (const int transparent : {0, 1, gray % size}) {
                const Gif gif{.width = static_cast<std::uint16_t>(size),
                              .height = 1,
                              .codes = lzw(all, codeSize),
                              .codeSize = codeSize,
                              .global = table,
                              .before = graphicControl(transparent)};
                EXPECT_EQ(loadGif(gif.data()), shown(size, 1, all, transparent, table)) << size << ' ' << gray;
            }
        }
    }
}

TEST_F(GifReader, CodesOfEveryKindComeOutWrong) {
    const Loaded picture = shown(4, 3, indexes);
    const auto coded = [](const Bytes& codes, unsigned codeSize = 2) {
        return changed([&](Gif& g) { g.codes = codes, g.codeSize = codeSize; }).data();
    };
    std::vector<Case> rows = {
        {"no clear code", coded(lzw(indexes, 2, {.clearFirst = false})), picture},
        {"no end code", coded(lzw(indexes, 2, {.endCode = false})), picture},
        {"clear codes in between", changed([](Gif& g) {
                                       g.width = 2, g.height = 1;
                                       g.codes = CodeStream().put(4, 3).put(4, 3).put(1, 3).put(4, 3).put(2, 3).bytes();
                                   }).data(),
         shown(2, 1, {1, 2})},
        {"a string beyond the last pixel",
         changed([](Gif& g) { g.height = 1, g.codes = lzw(std::vector<int>(10, 3), 2); }).data(),
         shown(4, 1, {3, 3, 3, 3})},
        {"bytes behind the end code", coded(lzw(indexes, 2) + Bytes{1, 2, 3}), picture},
        {"too few pixels, then nothing", coded(lzw({0, 1, 2, 3}, 2, {.endCode = false})), nothing},
        {"too few pixels, then the end code", coded(lzw({0, 1, 2, 3}, 2)), nothing},
        {"nothing at all", coded({}), nothing},
        {"the first code is a string", coded(CodeStream().put(4, 3).put(6, 3).put(1, 3).put(5, 3).bytes()), nothing},
        {"a code beyond the next string",
         coded(CodeStream().put(4, 3).put(1, 3).put(7, 3).put(0, 3).put(0, 4).put(0, 4).bytes()), nothing},
    };
    for (unsigned codeSize = 0; codeSize <= 255; codeSize += codeSize < 13 ? 1 : 121) {
        const bool valid = codeSize >= 1 && codeSize <= 11;
        std::vector<int> two(12, 1);
        two[3] = two[4] = 0;
        rows.push_back(
            {"code size", coded(lzw(two, valid ? codeSize : 2), codeSize), valid ? shown(4, 3, two) : nothing});
    }
    expectAll(rows);

    // Long enough for full tables, strings of every length, and codes of twelve bits.
    std::mt19937 random(4);
    for (const bool clears : {false, true}) {
        for (const unsigned variety : {1U, 2U, 4U}) {
            std::vector<int> many(151UL * 149);
            for (int& index : many)
                index = static_cast<int>(random() % variety);
            const Gif gif{
                .width = 151, .height = 149, .codes = lzw(many, 2, {.clearWhenFull = clears}), .global = colors};
            EXPECT_EQ(loadGif(gif.data()), shown(151, 149, many)) << clears << variety;
        }
    }
}

TEST_F(GifReader, DamagedCodesAreCountedOtherwiseThanTheyAreDecoded) {
    std::mt19937 random(8);
    for (int round = 0; round < 3000; ++round) {
        const unsigned codeSize = 1 + static_cast<unsigned>(random() % 11);
        std::vector<int> noise(20 * 15 - random() % 3);
        for (int& index : noise)
            index = static_cast<int>(random() % std::min(1U << codeSize, 5U));
        Gif gif{.width = 20,
                .height = 15,
                .codes = lzw(noise, codeSize, {.endCode = random() % 2 == 0}),
                .codeSize = codeSize,
                .global = Bytes(48, 7)};
        gif.blockSize = 1 + random() % 255;
        if (round % 4 != 0) gif.codes[random() % gif.codes.size()] ^= static_cast<std::uint8_t>(1U << random() % 8);
        if (round % 4 == 3) gif.codes.resize(random() % gif.codes.size());
        const bool isWhole = lzwDescribes(gif.codes, codeSize, 20 * 15);
        EXPECT_EQ(isWhole, loadGif(gif.data()) != nothing) << round;
    }
}

TEST_F(GifReader, IndexesBeyondTheTableShowWhatIsNotThere) {
    const std::vector<int> beyond = {0, 5, 2, 6};
    Gif gif{.width = 4, .height = 1, .codes = lzw(beyond, 3), .codeSize = 3, .global = colors};
    EXPECT_EQ(loadGif(gif.data()), (Loaded{4, 1, {colorOf(0), {0, 0, 0, 255}, colorOf(2), {0, 0, 0, 255}}, AlphaNone}));
    gif.local = std::exchange(gif.global, {});
    EXPECT_EQ(loadGif(gif.data()), (Loaded{4, 1, {colorOf(0), {0, 0, 0, 255}, colorOf(2), {0, 0, 0, 255}}, AlphaNone}));

    // With transparency they take the bytes that follow in the data: here those of the extension and the descriptor.
    gif.global = std::exchange(gif.local, {});
    gif.before = graphicControl(2);
    const Bytes following = gif.before + Bytes{0x2C};
    EXPECT_EQ(loadGif(gif.data()), (Loaded{4,
                                           1,
                                           {colorOf(0),
                                            {following[5], following[4], following[3], 255},
                                            {0, 0, 0, 0},
                                            {following[8], following[7], following[6], 255}},
                                           AlphaSimple}));

    // Of 256 indexes, the last would have their colours behind the end.
    gif.codes = lzw({0, 1, 2, 255}, 8);
    gif.codeSize = 8;
    for (const char* signature : {"GIF89a", "gif89a"}) { // also of the system's loader, which is not asked again
        gif.signature = signature;
        EXPECT_EQ(loadGif(gif.data()), nothing) << signature;
    }
    // Only eight bits of an index count.
    gif.codes = lzw({0, 1, 258, 256}, 9);
    gif.codeSize = 9;
    EXPECT_EQ(loadGif(gif.data()), shown(4, 1, {0, 1, 2, 0}, 2));
}

TEST_F(GifReader, DataThatEndsEarlyIsReadBeyondOrLeavesAPicture) {
    Gif gif = plain();
    gif.before = Bytes{0x21, 0xFF, 2, 1, 2, 1, 9, 0} + graphicControl(1);
    gif.local = colors;
    const Bytes whole = gif.data();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const auto cut = std::make_unique<std::uint8_t[]>(length); // sanitizers watch its end
        std::copy_n(whole.begin(), length, cut.get());
        cPixSheet sheet;
        sheet.InitializeDIB(3, 2);
        const bool parsed = cGIFparser().LoadStream({cut.get(), length}, sheet);
        const bool onlyTrailerLacks = length == whole.size() - 1;
        EXPECT_EQ(sheet.Handle() != 0 && sheet.Width() == 4, onlyTrailerLacks) << length;
        // A run-time error answers true with an empty host; what is no GIF is left to other readers.
        EXPECT_EQ(parsed, length >= 6) << length;
        EXPECT_EQ(sheet.Handle() == 0, length >= 6 && !onlyTrailerLacks) << length;
    }
}

TEST_F(GifReader, AFailureOfTheSystemLeavesHalfAPicture) {
    using platform::SeamCall;
    for (const int transparent : {-1, 1}) {
        const Bytes data = changed([&](Gif& g) { g.before = graphicControl(transparent); }).data();
        const ByteArray array(data);
        for (const SeamCall call :
             {SeamCall::oleLoadPicture, SeamCall::getObject, SeamCall::createDIBSection, SeamCall::getDIBits,
              SeamCall::renderPicture, SeamCall::createCompatibleDC, SeamCall::selectObject}) {
            cPixSheet sheet;
            bool loaded = false;
            {
                const platform::ScopedFault fault(call);
                loaded = sheet.LoadPicture_Stream(array);
            }
            EXPECT_EQ(sheet.Handle() != 0, loaded) << static_cast<int>(call);
            if (loaded) {
                EXPECT_EQ((Loaded{4, 3, pixelsOf(sheet), sheet.Alpha()}), shown(4, 3, indexes, transparent));
            }
            EXPECT_TRUE(sheet.LoadPicture_Stream(array)) << "not usable afterwards";
        }
        for (long after = 0;; ++after) {
            cPixSheet sheet;
            const auto open = platform::openHandles();
            bool loaded = false, happened = false;
            {
                const AllocationFault fault(after, -1);
                loaded = sheet.LoadPicture_Stream(array);
                happened = fault.hasHappened();
            }
            EXPECT_EQ(sheet.Handle() != 0, loaded);
            sheet.DestroyDIB();
            EXPECT_EQ(platform::openHandles(), open);
            if (!happened) break;
            ASSERT_LT(after, 1000);
        }
    }
}
