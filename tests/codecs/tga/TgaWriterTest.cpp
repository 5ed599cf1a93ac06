// The bytes that are written, that they are read back as they were, and that nothing fails in silence.
#include "codecs/tga/TgaBuilder.h"
#include "platform/system.h"
#include "shared/modParsers.h"
#include "support/AllocationFault.h"
#include "surface/HostAccess.h"
#include <numeric>

using namespace pixkit;
using namespace pixkit::test;

namespace {

class TgaWriter : public QuietLoads {};

struct Options {
    bool Compress = false, ReduceBitDepth = false, AllowPreMultipliedPixels = false;
};

Bytes saved(const cPixSheet& sheet, Options options = {}) {
    ByteArray stream;
    EXPECT_TRUE(
        sheet.SaveToStream_TGA(stream, options.Compress, options.ReduceBitDepth, options.AllowPreMultipliedPixels));
    EXPECT_EQ(stream.dimensions(), 1);
    EXPECT_EQ(stream.lowerBound(), 0);
    return bytesOf(stream);
}

// One row of opaque gray pixels.
cPixSheet& grayRow(cPixSheet& sheet, const Bytes& grays) {
    std::vector<Pixel> pixels;
    for (const std::uint8_t g : grays)
        pixels.push_back({g, g, g, 255});
    fill(sheet, static_cast<std::int32_t>(grays.size()), 1, pixels);
    sheet.Alpha(AlphaNone);
    return sheet;
}

Bytes count(std::size_t from, std::size_t to) {
    Bytes bytes(to - from);
    std::iota(bytes.begin(), bytes.end(), static_cast<std::uint8_t>(from));
    return bytes;
}

Bytes header(std::uint8_t type, std::uint8_t depth, std::uint8_t width, std::uint8_t height, std::uint8_t descriptor,
             std::uint16_t entries = 0) {
    const bool isMapped = entries != 0;
    return {0,
            isMapped,
            type,
            0,
            0,
            static_cast<std::uint8_t>(entries),
            static_cast<std::uint8_t>(entries >> 8),
            static_cast<std::uint8_t>(isMapped ? 24 : 0),
            0,
            0,
            0,
            0,
            width,
            0,
            height,
            0,
            depth,
            descriptor};
}

} // namespace

TEST_F(TgaWriter, AFieldOrTheOrderOfRowsIsWrong) {
    cPixSheet opaque, translucent, claimed;
    fill(opaque, 2, 2, {{1, 2, 3, 255}, {4, 5, 6, 255}, {7, 8, 9, 255}, {1, 2, 3, 255}});
    opaque.Alpha(AlphaNone);
    fill(translucent, 1, 3, {{100, 50, 25, 128}, {0, 0, 0, 0}, {9, 8, 7, 255}});
    translucent.Alpha(AlphaComplex);
    fill(claimed, 1, 1, {{9, 8, 7, 128}});
    claimed.Alpha(AlphaNone);
    const struct {
        const char* fault;
        const cPixSheet& sheet;
        Options options;
        Bytes expected; // without extension area and footer
    } rows[] = {
        {"24 bits", opaque, {}, header(2, 24, 2, 2, 0) + Bytes{7, 8, 9, 1, 2, 3, 1, 2, 3, 4, 5, 6}},
        {"an opaque picture has nothing premultiplied",
         opaque,
         {false, false, true},
         header(2, 24, 2, 2, 0) + Bytes{7, 8, 9, 1, 2, 3, 1, 2, 3, 4, 5, 6}},
        {"palette in the order of first appearance, from the bottom row",
         opaque,
         {false, true, false},
         header(1, 8, 2, 2, 0, 3) + Bytes{7, 8, 9, 1, 2, 3, 4, 5, 6} + Bytes{0, 1, 1, 2}},
        {"straight: channel * 255 \\ alpha",
         translucent,
         {},
         header(2, 32, 1, 3, 8) + Bytes{9, 8, 7, 255, 0, 0, 0, 0, 199, 99, 49, 128}},
        {"no palette with alpha",
         translucent,
         {false, true, false},
         header(2, 32, 1, 3, 8) + Bytes{9, 8, 7, 255, 0, 0, 0, 0, 199, 99, 49, 128}},
        {"the Alpha property decides, not the pixels", claimed, {}, header(2, 24, 1, 1, 0) + Bytes{9, 8, 7}},
        {"one pixel cannot be coded shorter", claimed, {true, false, false}, header(2, 24, 1, 1, 0) + Bytes{9, 8, 7}},
    };
    const TemporaryFolder folder;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fault);
        const Bytes expected = row.expected + footer();
        EXPECT_EQ(saved(row.sheet, row.options), expected);
        EXPECT_TRUE(row.sheet.SaveToFile_TGA(folder.name(u8"größe 图.tga"), row.options.Compress,
                                             row.options.ReduceBitDepth, row.options.AllowPreMultipliedPixels, false));
        EXPECT_EQ(readFile(folder.path(u8"größe 图.tga")), expected);
    }
}

TEST_F(TgaWriter, TheExtensionAreaSaysSomethingElse) {
    cPixSheet sheet;
    fill(sheet, 1, 1, {{100, 50, 25, 128}});
    sheet.Alpha(AlphaComplex);
    const platform::LocalTime before = platform::GetLocalTime();
    Bytes file = saved(sheet, {false, false, true});
    const platform::LocalTime after = platform::GetLocalTime();
    constexpr std::size_t areaStart = 18 + 4;
    ASSERT_EQ(file.size(), areaStart + 495 + 26);

    const auto seconds = [](const platform::LocalTime& t) { return (t.wHour * 60 + t.wMinute) * 60 + t.wSecond; };
    const auto word = [&](std::size_t at) {
        const std::uint8_t* p = &file[areaStart + at];
        return static_cast<std::uint16_t>(p[0] | p[1] << 8);
    };
    const platform::LocalTime said = {word(371), word(367), word(369), word(373), word(375), word(377)};
    if (before.wDay == after.wDay) { // not at midnight
        EXPECT_EQ(said.wYear, before.wYear);
        EXPECT_EQ(said.wMonth, before.wMonth);
        EXPECT_EQ(said.wDay, before.wDay);
        EXPECT_GE(seconds(said), seconds(before));
        EXPECT_LE(seconds(said), seconds(after));
    }
    std::fill_n(file.begin() + areaStart + 367, 12, std::uint8_t{0});

    Bytes area(495);
    area[0] = 0xEF;
    area[1] = 0x01;
    const std::string_view softwareID = "Harwick cPixSheet Suite";
    std::copy(softwareID.begin(), softwareID.end(), area.begin() + 426);
    area[467] = 3;
    area[469] = 1;
    area[470] = area[471] = area[472] = area[473] = 255;
    area[494] = 4;
    EXPECT_EQ(file, (header(2, 32, 1, 1, 8) + Bytes{100, 50, 25, 128} + area + footer(areaStart)));
}

TEST_F(TgaWriter, PacketsAreCutInTheWrongPlaces) {
    const Bytes rawRun = count(0, 128);
    const struct {
        const char* fault;
        Bytes grays;
        Bytes coded; // of palette indexes or, when empty, not coded
    } rows[] = {
        {"two equal pixels", {5, 5}, {}}, // 2 bytes are not shorter than 2
        {"three equal pixels", {5, 5, 5}, {130, 0}},
        {"300 equal pixels", Bytes(300, 5), {255, 0, 255, 0, 171, 0}},
        {"128 equal pixels", Bytes(128, 5), {255, 0}},
        {"129 equal pixels: the last alone is raw", Bytes(129, 5), {255, 0, 0, 0}},
        {"a raw pixel before a run", {7, 5, 5, 5, 5}, {0, 0, 131, 1}},
        {"a run before a raw pixel", {5, 5, 5, 5, 7}, {131, 0, 0, 1}},
        {"the pair that ends a raw packet begins the run", {1, 2, 3, 3, 3, 3, 3, 3}, {1, 0, 1, 133, 2}},
        {"a run after a run", {5, 5, 5, 7, 7, 7}, {130, 0, 130, 1}},
        {"a raw packet between runs", {5, 5, 5, 5, 1, 2, 7, 7, 7, 7}, {131, 0, 1, 1, 2, 131, 3}},
        {"a raw packet of 128, then its last pixel again", rawRun + Bytes(128, 127),
         Bytes{127} + rawRun + Bytes{255, 127}},
        {"a raw packet is full with the first of the equal pixels", count(0, 127) + Bytes(128, 127),
         Bytes{127} + rawRun + Bytes{254, 127}},
        {"the longest raw packet before a pair", count(0, 126) + Bytes(128, 126),
         Bytes{125} + count(0, 126) + Bytes{255, 126}},
        {"nothing repeats", {1, 2, 3, 4}, {}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.fault);
        cPixSheet sheet;
        grayRow(sheet, row.grays);
        const Bytes file = saved(sheet, {true, true, false});
        const std::size_t dataStart = 18 + std::size_t{file[5]} * 3 + std::size_t{file[6]} * 768;
        const bool isCoded = !row.coded.empty();
        EXPECT_EQ(file[2], isCoded ? 9 : 1);
        if (isCoded) {
            EXPECT_EQ(Bytes(file.begin() + static_cast<std::ptrdiff_t>(dataStart), file.end() - 26), row.coded);
        } else {
            EXPECT_EQ(file.size(), dataStart + row.grays.size() + 26);
        }
        EXPECT_EQ(loadTga(file).pixels, pixelsOf(sheet));
    }
}

TEST_F(TgaWriter, PacketsOfColourOrAcrossRowsAreWrong) {
    cPixSheet sheet;
    fill(sheet, 2, 2, std::vector<Pixel>(4, Pixel{1, 2, 3, 255}));
    sheet.Alpha(AlphaNone);
    EXPECT_EQ(saved(sheet, Options{.Compress = true}),
              (header(10, 24, 2, 2, 0) + Bytes{129, 1, 2, 3, 129, 1, 2, 3} + footer()));
    // The fourth byte tells pixels apart, and the coded pixels come before the area that the footer points to.
    fill(sheet, 4, 1, {{0, 0, 0, 9}, {0, 0, 0, 9}, {0, 0, 0, 9}, {0, 0, 0, 8}});
    sheet.Alpha(AlphaComplex);
    const Bytes file = saved(sheet, {true, false, true});
    EXPECT_EQ(Bytes(file.begin(), file.begin() + 28),
              (header(10, 32, 4, 1, 8) + Bytes{130, 0, 0, 0, 9, 0, 0, 0, 0, 8}));
    EXPECT_EQ(Bytes(file.end() - 26, file.end()), footer(28));
}

TEST_F(TgaWriter, APaletteOf257ColoursOrAGrayOneIsWritten) {
    for (const std::int32_t colours : {255, 256, 257}) {
        SCOPED_TRACE(colours);
        cPixSheet sheet;
        std::vector<Pixel> pixels;
        pixels.reserve(static_cast<std::size_t>(colours));
        for (std::int32_t i = 0; i < colours; ++i) // far apart and close together, to meet in a hash table
            pixels.push_back({static_cast<std::uint8_t>(i * 64), static_cast<std::uint8_t>(i / 4),
                              static_cast<std::uint8_t>(i / 256 * 128), 255});
        fill(sheet, colours, 1, pixels);
        sheet.Alpha(AlphaNone);
        const Bytes file = saved(sheet, {false, true, false});
        const bool fits = colours <= 256;
        EXPECT_EQ(file[2], fits ? 1 : 2);
        EXPECT_EQ(file[5] | file[6] << 8, fits ? colours : 0);
        EXPECT_EQ(loadTga(file).pixels, pixels);
    }
    cPixSheet gray;
    EXPECT_EQ(saved(grayRow(gray, {1, 2}), Options{.ReduceBitDepth = true}),
              (header(1, 8, 2, 1, 0, 2) + Bytes{1, 1, 1, 2, 2, 2, 0, 1} + footer()));
}

TEST_F(TgaWriter, WhatIsWrittenIsReadDifferently) {
    const Samples random = noise(4);
    for (const std::int32_t width : {1, 2, 3, 5, 127, 128, 129, 260}) {
        for (const unsigned range : {1U, 2U, 255U}) { // few values give runs
            for (const bool hasAlpha : {false, true}) {
                cPixSheet sheet;
                sheet.InitializeDIB(width, 5);
                const auto bytes = static_cast<std::size_t>(width) * 20;
                for (std::size_t i = 0; i < bytes; ++i)
                    sheet.BitsPointer()[i] = static_cast<std::uint8_t>(random(i, 0, 0) % (range + 1));
                const auto alpha =
                    iparseValidateAlphaChannel(HostAccess::pixels(sheet), true, hasAlpha ? 0 : -1).bIsAlpha;
                sheet.Alpha(alpha);
                for (int options = 0; options < 4; ++options) {
                    const Loaded again = loadTga(saved(sheet, {(options & 1) != 0, (options & 2) != 0, true}));
                    EXPECT_EQ(again, (Loaded{width, 5, pixelsOf(sheet), alpha}))
                        << width << ' ' << range << ' ' << options;
                }
            }
        }
    }
}

TEST_F(TgaWriter, AFailedSaveSaysTrueOrSpoilsTheArray) {
    using platform::SeamCall;
    const TemporaryFolder folder;
    const std::string name = folder.name(u8"a.tga");
    cPixSheet sheet, empty, wide;
    fill(sheet, 1, 1, {{0, 0, 0, 128}});
    sheet.Alpha(AlphaComplex);
    ASSERT_TRUE(wide.InitializeDIB(65536, 1));
    ByteArray stream(Bytes{1, 2, 3});
    for (const cPixSheet* refused : {&empty, &wide}) {
        EXPECT_FALSE(refused->SaveToStream_TGA(stream));
        EXPECT_EQ(bytesOf(stream), (Bytes{1, 2, 3}));
        EXPECT_FALSE(refused->SaveToFile_TGA(name, false, false, false, false));
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path(u8"a.tga")));
    EXPECT_FALSE(sheet.SaveToFile_TGA(folder.name(u8"missing/a.tga")));

    // Header, pixels, extension area, footer.
    std::vector<std::pair<SeamCall, int>> failures = {{SeamCall::createFile, 0}, {SeamCall::moveFile, 0}};
    for (int after = 0; after < 4; ++after)
        failures.emplace_back(SeamCall::writeFile, after);
    for (const auto& [call, after] : failures) {
        SCOPED_TRACE(std::to_string(static_cast<int>(call)) + ", after " + std::to_string(after));
        writeFile(folder.path(u8"a.tga"), {1});
        {
            const platform::ScopedFault fault(call, after, 1);
            EXPECT_FALSE(sheet.SaveToFile_TGA(name, false, false, true, false));
        }
        EXPECT_TRUE(sheet.SaveToFile_TGA(name, false, false, true, false)) << "no handle may be left open";
    }
    for (long after = 0;; ++after) {
        ASSERT_LT(after, 20);
        ByteArray kept(Bytes{1, 2, 3});
        bool isSaved = false;
        {
            const AllocationFault fault(after);
            isSaved = sheet.SaveToStream_TGA(kept, true, true, true);
        }
        if (isSaved) break;
        EXPECT_EQ(bytesOf(kept), (Bytes{1, 2, 3}));
        expectedReports.emplace_back("SaveToStream_TGA");
    }
    EXPECT_FALSE(expectedReports.empty());
}

TEST_F(TgaWriter, AnExistingFileIsReplacedAgainstAPersonsWill) {
    const TemporaryFolder folder;
    const std::string name = folder.name(u8"a.tga");
    writeFile(folder.path(u8"a.tga"), {1});
    int answer = platform::answerNo;
    int questions = 0;
    platform::setMessageBoxHandler([&](const std::string&, const std::string&, std::uint32_t) {
        ++questions;
        return answer;
    });
    cPixSheet sheet;
    fill(sheet, 1, 1, {{1, 2, 3, 255}});
    EXPECT_FALSE(sheet.SaveToFile_TGA(name));
    EXPECT_EQ(readFile(folder.path(u8"a.tga")), Bytes{1});
    answer = platform::answerYes;
    EXPECT_TRUE(sheet.SaveToFile_TGA(name));
    EXPECT_EQ(questions, 2);
    EXPECT_NE(readFile(folder.path(u8"a.tga")), Bytes{1});
}
