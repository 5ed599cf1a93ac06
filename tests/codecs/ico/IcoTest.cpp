// Which entry or source is taken, and hotspots. What entries of every kind and size hold stands in the ledgers.
#include "support/QuietLoads.h"
#include "surface/HostAccess.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class Ico : public QuietLoads {};

cPixSheet& load(cPixSheet& sheet, const Bytes& file, std::int32_t cX, std::int32_t cY, std::int32_t bitDepth = 0) {
    EXPECT_TRUE(sheet.LoadPicture_Stream(ByteArray(file), cX, cY, 0, 0, true, bitDepth));
    return sheet;
}

Bytes saved(const std::vector<const cPixSheet*>& sources, const std::vector<IconEntrySize>& sizes,
            std::int32_t count = -1) {
    ByteArray stream(Bytes{1, 2, 3});
    cPixSheet asked;
    fill(asked, 1, 1, {{}}); // an instance without an image saves nothing
    EXPECT_EQ(asked.SaveToStream_ICO(stream, sources, sizes),
              count >= 0 ? count : static_cast<std::int32_t>(sizes.empty() ? sources.size() : sizes.size()));
    return bytesOf(stream);
}

} // namespace

// Entries number themselves from 1 in their pixels.
TEST_F(Ico, TheWrongEntryIsTaken) {
    // Of choice: 16 at 4 bits, 48 at 24, 32 at 8, 16 at 24, 32 at 24, 16 at 8. Of choice-depth: 16 is as far from 8 as
    // from 24.
    const struct {
        const char* file;
        std::int32_t cX, cY, bitDepth, number;
    } rows[] = {{"choice", 16, 16, 24, 4},        {"choice", 16, 16, 32, 4},      {"choice", 16, 16, 8, 6},
                {"choice", 16, 16, 0, 4},         {"choice", 17, 17, 24, 5},      {"choice", 1, 1, 24, 4},
                {"choice", 33, 10, 4, 2},         {"choice", 49, 49, 4, 2},       {"choice", 32, 0, 24, 5},
                {"choice", 0, 16, 1, 1},          {"choice", 0, 0, 1, 2},         {"choice", -5, -5, 32, 2},
                {"choice", 16, 16, 33, 4},        {"choice", 16, 16, -1, 4},      {"choice", 16, 32, 8, 3},
                {"choice", 2147483647, 1, 0, 2},  {"choice-depth", 8, 8, 16, 2},  {"choice-equal", 8, 8, 24, 1},
                {"choice-larger", 33, 33, 24, 2}, {"choice-area", 30, 30, 24, 2}, {"choice-png", 16, 16, 24, 1},
                {"choice-hotspot", 16, 16, 24, 1}};
    cPixSheet sheet;
    for (const auto& row : rows)
        EXPECT_EQ(load(sheet, picture(std::string("ico/") + row.file + ".ico"), row.cX, row.cY, row.bitDepth)
                      .BitsPointer()[0],
                  row.number)
            << row.file << ", " << row.cX << " x " << row.cY << " at " << row.bitDepth;
    // A PNG's size and depth are its own.
    EXPECT_EQ(load(sheet, picture("ico/choice-png.ico"), 16, 16, 1).ImageType(), imgPNGicon);
    EXPECT_EQ(load(sheet, picture("ico/choice-png.ico"), 0, 0).Width(), 30);
}

TEST_F(Ico, SizesAreMiscountedOrCannotBeReloaded) {
    cPixSheet sheet;
    std::vector<IconSourceSize> sizes = {{9, 9, 9, 9}};
    ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(picture("ico/several.ico"))));
    EXPECT_EQ(sheet.SourceIconSizes(sizes), 0) << "the file was not kept";
    EXPECT_EQ(sizes.size(), 1U);
    load(sheet, picture("ico/several.ico"), 16, 16);
    EXPECT_EQ(sheet.SourceIconSizes(sizes), 5);
    EXPECT_EQ(sizes, (std::vector<IconSourceSize>{
                         {16, 16, 4, 0}, {32, 32, 8, 0}, {9, 7, 24, 0}, {20, 18, 32, 1}, {32, 32, 24, 0}}));
    for (const IconSourceSize& size : std::vector(sizes)) {
        ASSERT_TRUE(sheet.LoadPicture_FromOrignalFormat(size.Width, size.Height, size.bitDepth));
        EXPECT_EQ(sheet.Height(), size.Height);
    }
    EXPECT_EQ(load(sheet, picture("bmp/rle8.bmp"), 0, 0).SourceIconSizes(sizes), 0) << "another kind, kept";
}

TEST_F(Ico, TheHotspotIsLostOrAnIconIsACursor) {
    const TemporaryFolder folder;
    const CursorHotspot none, small{3, 5};
    cPixSheet sheet, other;
    EXPECT_EQ(HostAccess::hotspot(load(sheet, picture("ico/choice-hotspot.ico"), 32, 32)), (CursorHotspot{65535, 7}));
    EXPECT_EQ(HostAccess::hotspot(load(sheet, picture("ico/choice-hotspot.ico"), 16, 16)), small);
    const std::vector<IconEntrySize> size = {{32, 64, 32}};
    ASSERT_EQ(sheet.SaveToFile_ICO(folder.name(u8"a.cur"), {}, false, size), 1);
    load(other, readFile(folder.path(u8"a.cur")), 0, 0);
    EXPECT_EQ(HostAccess::hotspot(other), (CursorHotspot{6, 26})) << "twice as large, rows down, where the picture is";
    for (const auto& [name, type] : {std::pair(u8"a.CUR", 2), {u8"a.Ico", 1}, {u8"a.dat", 2}}) {
        ASSERT_EQ(sheet.SaveToFile_ICO(folder.name(name), {}, false), 1);
        EXPECT_EQ(readFile(folder.path(name)).at(2), type);
    }
    ASSERT_TRUE(sheet.MakeGrayScale(gsclNTSCPAL));
    EXPECT_EQ(saved({&sheet}, {}).at(2), 2) << "still a cursor";
    sheet.CopyImageTo(other, 32, 8);
    EXPECT_EQ(HostAccess::hotspot(other), (CursorHotspot{6, 2}));
    other.DestroyDIB();
    sheet.SwapDIBs(&other);
    EXPECT_EQ(HostAccess::hotspot(sheet), none);
    EXPECT_EQ(HostAccess::hotspot(other), small);
    EXPECT_EQ(HostAccess::hotspot(load(other, picture("ico/choice.ico"), 0, 0)), none) << "no hotspot: planes, depth";
    ASSERT_EQ(other.SaveToFile_ICO(folder.name(u8"b.cur"), {}, false), 1);
    EXPECT_EQ(readFile(folder.path(u8"b.cur")).at(2), 2) << "the name says so";
}

TEST_F(Ico, AnEntryIsMadeOfTheWrongSource) {
    std::array<cPixSheet, 4> sheets;
    const std::int32_t sides[] = {48, 16, 64, 16};
    for (std::size_t i = 0; i < 4; ++i)
        draw(sheets[i], sides[i], sides[i], AlphaNone, [i](auto, auto) {
            return Pixel{static_cast<std::uint8_t>(10 * i), 0, 0, 255};
        });
    const std::vector<const cPixSheet*> sources = {&sheets[0], &sheets[1], &sheets[2], &sheets[3]};
    const std::pair<std::int32_t, std::uint8_t> wanted[] = {{16, 10}, {10, 10}, {17, 0}, {48, 0}, {49, 20}, {100, 20}};
    std::vector<IconEntrySize> sizes;
    for (const auto& [side, blue] : wanted)
        sizes.push_back({side, side, 24});
    const Bytes file = saved(sources, sizes);
    cPixSheet sheet;
    for (const auto& [side, blue] : wanted)
        EXPECT_EQ(load(sheet, file, side, side).BitsPointer()[0], blue) << side;
    EXPECT_EQ(load(sheet, saved(sources, {}), 0, 0).Width(), 64);
    const Bytes untouched = {1, 2, 3};
    const IconEntrySize good{16, 16, 32};
    for (const IconEntrySize bad : {IconEntrySize{-1, 16, 32},
                                    {16, 65536, 32},
                                    {65535, 65535, 32},
                                    {16, 16, 33},
                                    {16, 16, -2},
                                    {16, 16, 1 << 30}})
        EXPECT_EQ(saved(sources, {good, bad}, 0), untouched) << bad.Width << ' ' << bad.Height << ' ' << bad.bitDepth;
    EXPECT_EQ(saved({&sheet, nullptr}, {good}, 0), untouched);
    EXPECT_EQ(saved(sources, std::vector<IconEntrySize>(65536, {1, 1, 1}), 0), untouched);
    saved(sources, std::vector<IconEntrySize>(65535, {1, 1, 1}));
}
