// What an icon file that is written says of itself, that it comes back as it was meant, and that nothing fails in
// silence. Whether others read the same pixels in it is tests/oracle's question.
#include "codecs/ico/IcoBuilder.h"
#include "codecs/ico/IcoScale.h"
#include "support/AllocationFault.h"
#include "surface/HostAccess.h"
#include <algorithm>

using namespace pixkit;
using namespace pixkit::test;

namespace {

class IcoWriter : public QuietLoads {};

const Pixel clear{0, 0, 0, 0}, black{0, 0, 0, 255}, white{255, 255, 255, 255}, red{0, 0, 255, 255};

std::pair<std::int32_t, Bytes> saved(const std::vector<const cPixSheet*>& sources,
                                     const std::vector<IconEntrySize>& sizes) {
    ByteArray stream(Bytes{1, 2, 3});
    const std::int32_t count = cPixSheet().SaveToStream_ICO(stream, sources, sizes);
    EXPECT_EQ(stream.dimensions(), 1);
    EXPECT_EQ(stream.lowerBound(), 0);
    return {count, bytesOf(stream)};
}

std::vector<Pixel> scaled(const cPixSheet& sheet, std::int32_t width, std::int32_t height) {
    const auto pixels = icoScale(HostAccess::pixels(sheet), sheet.Alpha() != AlphaNone, static_cast<std::size_t>(width),
                                 static_cast<std::size_t>(height));
    cPixSheet result;
    result.InitializeDIB(width, height);
    std::ranges::copy(pixels, result.BitsPointer());
    return pixelsOf(result);
}

// Many colours, clear and translucent places.
void colorful(cPixSheet& sheet, std::int32_t width, std::int32_t height) {
    std::vector<Pixel> pixels;
    const Samples random = noise(3);
    for (std::int32_t i = 0; i < width * height; ++i) {
        const auto x = static_cast<std::size_t>(i % width), y = static_cast<std::size_t>(i / width);
        const auto alpha = static_cast<std::uint8_t>((x + y) % 5 == 0 ? 0 : (x * y) % 7 == 3 ? random(x, y, 3) : 255);
        const auto channel = [&](unsigned value) { return static_cast<std::uint8_t>(value % 256 * alpha / 255); };
        pixels.push_back({channel(static_cast<unsigned>(x * 9)), channel(static_cast<unsigned>(y * 7)),
                          channel(random(x, y, 0)), alpha});
    }
    fill(sheet, width, height, pixels);
    sheet.Alpha(AlphaComplex);
}

} // namespace

TEST_F(IcoWriter, AFieldOrAMaskIsWrong) {
    cPixSheet sheet;
    fill(sheet, 3, 1, {white, clear, {0, 64, 0, 100}});
    sheet.Alpha(AlphaComplex);
    const auto header = [](std::uint8_t depth, std::uint8_t rows) {
        return Bytes{40, 0, 0, 0, 3, 0, 0, 0, 2, 0, 0, 0, 1, 0, depth, 0, 0, 0, 0, 0, rows, 0, 0, 0} + Bytes(16);
    };
    const auto file = [](std::uint8_t colors, std::uint8_t depth, const Bytes& image) {
        return Bytes{0, 0, 1, 0, 1, 0, 3, 1, colors, 0, 1, 0, depth, 0} +
               Bytes{static_cast<std::uint8_t>(image.size()),
                     static_cast<std::uint8_t>(image.size() >> 8),
                     0,
                     0,
                     22,
                     0,
                     0,
                     0} +
               image;
    };
    const Bytes mask = {0x60, 0, 0, 0};
    const struct {
        std::int32_t asked;
        Bytes expected;
    } rows[] = {
        {1, file(2, 1, header(1, 8) + Bytes{0, 0, 0, 0, 255, 255, 255, 0, 0x80, 0, 0, 0} + mask)},
        // The palette in the order of the picture's colours.
        {2, file(16, 4, header(4, 8) + Bytes{255, 255, 255, 0} + Bytes(60) + Bytes{0x01, 0x10, 0, 0} + mask)},
        {8, file(0, 8, header(8, 8) + Bytes{255, 255, 255, 0} + Bytes(1020) + Bytes{0, 1, 1, 0} + mask)},
        {HIGH_COLOR, file(0, 24, header(24, 16) + Bytes{255, 255, 255} + Bytes(9) + mask)},
        {TRUE_COLOR, file(0, 24, header(24, 16) + Bytes{255, 255, 255} + Bytes(9) + mask)},
        {0, file(0, 32, header(32, 16) + Bytes{255, 255, 255, 255, 0, 0, 0, 0, 0, 163, 0, 100} + mask)},
    };
    for (const auto& row : rows)
        EXPECT_EQ(saved({&sheet}, {{0, 0, row.asked}}), std::pair(1, row.expected)) << row.asked;
    EXPECT_EQ(saved({&sheet}, {}), std::pair(1, rows[5].expected)) << "its own size at 32 bits";
}

TEST_F(IcoWriter, OurReaderFindsOtherPixels) {
    cPixSheet many, hot;
    colorful(many, 37, 29);
    fill(hot, 2, 2, {red, clear, white, black});
    const struct {
        const char* what;
        const cPixSheet* source;
        IconEntrySize size;
        std::size_t mostColors; // that are seen
        eImageFormat type;
    } rows[] = {
        {"32 bits", &many, {37, 29, 32}, 2000, imgIconARGB},      {"24 bits", &many, {37, 29, 24}, 2000, imgIcon},
        {"256 colours", &many, {37, 29, 8}, 255, imgIcon},        {"16 colours", &many, {37, 29, 4}, 15, imgIcon},
        {"black and white", &many, {37, 29, 1}, 2, imgIcon},      {"few colours", &hot, {2, 2, 4}, 3, imgIcon},
        {"PNG", &many, {256, 256, -1}, 70000, imgPNGicon},        {"PNG, wide", &many, {300, 20, 24}, 9000, imgPNGicon},
        {"PNG, 16 colours", &many, {256, 40, 4}, 15, imgPNGicon},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        const auto [count, file] = saved({row.source}, {row.size});
        ASSERT_EQ(count, 1);
        const LoadedBmp found = loadIco(file, {row.size.Width, row.size.Height, 0});
        EXPECT_EQ(found.type, row.type);
        std::vector<Pixel> wanted = scaled(*row.source, row.size.Width, row.size.Height);
        ASSERT_EQ(found.pixels.size(), wanted.size());
        std::vector<Pixel> colors;
        int mostOff = 0;
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            const bool isExactAlpha = row.size.bitDepth == 32 || row.size.bitDepth == TRUE_COLOR_ALPHA;
            const unsigned alpha = isExactAlpha ? wanted[i][3] : wanted[i][3] < 128 ? 0 : 255;
            EXPECT_EQ(found.pixels[i][3], alpha);
            if (alpha != 0) colors.push_back(found.pixels[i]);
            for (std::size_t c = 0; c < 3 && alpha != 0 && (row.size.bitDepth == 24 || isExactAlpha); ++c) {
                const int straight = wanted[i][c] * 255 / wanted[i][3];
                mostOff = std::max(mostOff, std::abs(found.pixels[i][c] - straight * static_cast<int>(alpha) / 255));
            }
        }
        EXPECT_EQ(mostOff, 0);
        std::ranges::sort(colors);
        colors.erase(std::unique(colors.begin(), colors.end()), colors.end());
        EXPECT_LE(colors.size(), row.mostColors);
        if (row.source == &hot) {
            EXPECT_EQ(found.pixels, pixelsOf(hot));
        }
    }
}

// The mean of what a pixel covers, and between centres where it grows; in proportion, in the middle.
TEST_F(IcoWriter, ScalingLosesOrInventsLight) {
    cPixSheet sheet, opaque;
    fill(sheet, 4, 2, {{0, 0, 0, 0}, {4, 8, 100, 200}, red, red, clear, {2, 0, 0, 2}, white, white});
    sheet.Alpha(AlphaComplex);
    EXPECT_EQ(scaled(sheet, 2, 1), (std::vector<Pixel>{{2, 2, 25, 51}, {128, 128, 255, 255}}));
    EXPECT_EQ(scaled(sheet, 1, 1), (std::vector<Pixel>{{65, 65, 140, 153}}));
    EXPECT_EQ(scaled(sheet, 2, 3),
              (std::vector<Pixel>{clear, clear, {2, 2, 25, 51}, {128, 128, 255, 255}, clear, clear}));
    EXPECT_EQ(scaled(sheet, 4, 2), pixelsOf(sheet));
    fill(opaque, 2, 1, {{0, 0, 0, 0}, {90, 30, 0, 0}});
    opaque.Alpha(AlphaNone);
    EXPECT_EQ(scaled(opaque, 4, 2), (std::vector<Pixel>{black,
                                                        {23, 8, 0, 255},
                                                        {68, 23, 0, 255},
                                                        {90, 30, 0, 255},
                                                        black,
                                                        {23, 8, 0, 255},
                                                        {68, 23, 0, 255},
                                                        {90, 30, 0, 255}}));
    EXPECT_EQ(scaled(opaque, 2, 4)[1], clear);
    // Thirds are shared, and one colour stays one colour at any size.
    fill(sheet, 3, 1, {white, {0, 0, 0, 255}, white});
    EXPECT_EQ(scaled(sheet, 2, 1), (std::vector<Pixel>{{170, 170, 170, 255}, {170, 170, 170, 255}}));
    for (const std::int32_t side : {1, 7, 16, 100, 333}) {
        fill(sheet, 50, 50, std::vector<Pixel>(2500, Pixel{3, 77, 150, 151}));
        sheet.Alpha(AlphaComplex);
        for (const Pixel& pixel : scaled(sheet, side, side))
            ASSERT_EQ(pixel, (Pixel{3, 77, 150, 151})) << side;
    }
}

TEST_F(IcoWriter, AnEntryIsMadeOfTheWrongSource) {
    std::array<cPixSheet, 4> sheets;
    const std::int32_t sides[] = {48, 16, 64, 16};
    for (std::size_t i = 0; i < 4; ++i)
        fill(sheets[i], sides[i], sides[i],
             std::vector<Pixel>(4096, Pixel{static_cast<std::uint8_t>(10 * i), 0, 0, 255}));
    const std::vector<const cPixSheet*> sources = {&sheets[0], &sheets[1], &sheets[2], &sheets[3]};
    const std::pair<std::int32_t, std::uint8_t> wanted[] = {{16, 10}, {10, 10}, {17, 0}, {48, 0}, {49, 20}, {100, 20}};
    std::vector<IconEntrySize> sizes;
    for (const auto& [side, blue] : wanted)
        sizes.push_back({side, side, 24});
    const auto [count, file] = saved(sources, sizes);
    EXPECT_EQ(count, 6);
    for (const auto& [side, blue] : wanted)
        EXPECT_EQ(loadIco(file, {side, side, 0}).pixels.at(0), (Pixel{blue, 0, 0, 255})) << side;
    cPixSheet all;
    const auto own = saved(sources, {});
    EXPECT_EQ(own.first, 4);
    ASSERT_TRUE(all.LoadPicture_Stream(ByteArray(own.second), 0, 0, 0, 0, true));
    std::vector<IconSourceSize> found;
    EXPECT_EQ(all.SourceIconSizes(found), 4);
    EXPECT_EQ(found.at(2), (IconSourceSize{64, 64, 32, 0}));
}

TEST_F(IcoWriter, ACursorLosesItsHotspotOrAnIconIsACursor) {
    const TemporaryFolder folder;
    cPixSheet cursor, again;
    const auto make = [&](std::uint16_t type, Bytes image) {
        return icoFile({{.payload = std::move(image), .width = 2, .height = 1, .planes = 1, .bitCount = 7}}, type);
    };
    const Bytes image = icoBitmap({.width = 2, .height = 1, .bitCount = 24, .pixels = Bytes(8, 9)}, Bytes(4));
    ASSERT_TRUE(cursor.LoadPicture_Stream(ByteArray(make(2, image))));
    const struct {
        const char8_t* name;
        bool isCursor;
    } rows[] = {{u8"a.cur", true}, {u8"a.CUR", true}, {u8"a.ico", false}, {u8"a.Ico", false}, {u8"a.dat", true}};
    for (const auto& row : rows) {
        const std::vector<IconEntrySize> sizes = {{4, 4, 32}, {2, 1, 4}};
        ASSERT_EQ(cursor.SaveToFile_ICO(folder.name(row.name), {}, false, sizes), 2);
        const Bytes file = readFile(folder.path(row.name));
        EXPECT_EQ(file.at(2), row.isCursor ? 2 : 1);
        ASSERT_TRUE(again.LoadPicture_File(folder.name(row.name), 4, 4));
        // Twice as large, and one row down, where the picture begins.
        EXPECT_EQ(HostAccess::hotspot(again), row.isCursor ? (CursorHotspot{2, 15}) : CursorHotspot{});
    }
    ASSERT_TRUE(again.LoadPicture_Stream(ByteArray(make(1, image))));
    EXPECT_EQ(again.SaveToFile_ICO(folder.name(u8"b.cur"), {}, false), 1);
    EXPECT_EQ(readFile(folder.path(u8"b.cur")).at(2), 2) << "the name says so";
    ASSERT_TRUE(cursor.MakeGrayScale(gsclNTSCPAL));
    EXPECT_EQ(saved({&cursor}, {}).second.at(2), 2) << "so does the image";
}

// FNV-1a over files of every kind: the same in every build, on every system and processor.
TEST_F(IcoWriter, TheBytesDifferBetweenBuilds) {
    cPixSheet small, large;
    colorful(small, 40, 40);
    colorful(large, 301, 200);
    std::vector<IconEntrySize> sizes;
    for (const std::int32_t depth : {1, 4, 8, 24, 32})
        for (const std::int32_t side : {16, 31, 48, 256})
            sizes.push_back({side, side, depth});
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (const std::uint8_t byte : saved({&small, &large}, sizes).second)
        hash = (hash ^ byte) * 0x100000001B3U;
    EXPECT_EQ(hash, 0xCF1AAE98863606E2U);
}

TEST_F(IcoWriter, AFailedSaveSaysASizeOrSpoilsWhatWasThere) {
    using platform::SeamCall;
    const TemporaryFolder folder;
    const std::string name = folder.name(u8"größe 图.ico");
    cPixSheet sheet, empty, wide;
    colorful(sheet, 20, 20);
    ASSERT_TRUE(wide.InitializeDIB(65536, 1));
    const std::pair<std::int32_t, Bytes> nothing = {0, {1, 2, 3}};
    const IconEntrySize good{16, 16, 32};
    EXPECT_EQ(saved({}, {good}), nothing) << "no image in the instance";
    EXPECT_EQ(saved({&sheet, nullptr}, {good}), nothing);
    EXPECT_EQ(saved({&empty, &sheet}, {good}), nothing);
    EXPECT_EQ(saved({&wide}, {}), nothing);
    EXPECT_EQ(saved({&wide}, {good}).first, 1);
    EXPECT_EQ(saved({&sheet}, std::vector<IconEntrySize>(65536, {1, 1, 1})), nothing);
    EXPECT_EQ(saved({&sheet}, std::vector<IconEntrySize>(65535, {1, 1, 1})).first, 65535);
    for (const IconEntrySize bad : {IconEntrySize{-1, 16, 32},
                                    {16, 65536, 32},
                                    {65535, 65535, 32},
                                    {16, 16, 33},
                                    {16, 16, -2},
                                    {16, 16, 1 << 30}}) {
        EXPECT_EQ(saved({&sheet}, {good, bad}), nothing) << bad.Width << ' ' << bad.Height << ' ' << bad.bitDepth;
    }
    const Bytes old = {1, 2, 3};
    writeFile(folder.path(u8"größe 图.ico"), old);
    EXPECT_EQ(sheet.SaveToFile_ICO(name, {}, true, std::vector<IconEntrySize>{{16, 16, 99}}), 0) << "and no question";
    EXPECT_EQ(sheet.SaveToFile_ICO(folder.name(u8"missing/a.ico"), {}, false), 0);
    EXPECT_EQ(sheet.SaveToFile_ICO(folder.name(u8""), {}, false), 0);
    for (const SeamCall call : {SeamCall::createFile, SeamCall::writeFile, SeamCall::moveFile}) {
        const platform::ScopedFault fault(call, 0, 1);
        EXPECT_EQ(sheet.SaveToFile_ICO(name, {}, false), 0);
    }
    EXPECT_EQ(readFile(folder.path(u8"größe 图.ico")), old);
    EXPECT_EQ(empty.SaveToFile_ICO(name, std::array<const cPixSheet*, 1>{&sheet}, false), 1) << "no handle left open";
    EXPECT_EQ(readFile(folder.path(u8"größe 图.ico")), saved({&sheet}, {}).second);
    for (long after = 0;; ++after) {
        ASSERT_LT(after, 500);
        ByteArray kept(old);
        std::int32_t count = 0;
        {
            const AllocationFault fault(after);
            count = sheet.SaveToStream_ICO(kept, {}, std::array{good, IconEntrySize{16, 16, 4}});
        }
        if (count == 2) break;
        EXPECT_EQ(count, 0);
        EXPECT_EQ(bytesOf(kept), old);
        expectedReports.emplace_back("SaveToStream_ICO");
    }
    EXPECT_FALSE(expectedReports.empty());
}
