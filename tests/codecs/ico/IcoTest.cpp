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
    ASSERT_TRUE(sheet.MakeGrayScale(gsclNTSCPAL));
    EXPECT_EQ(saved({&sheet}, {}).at(2), 2) << "still a cursor";
    sheet.CopyImageTo(other, 32, 8);
    EXPECT_EQ(HostAccess::hotspot(other), (CursorHotspot{6, 2}));
    other.DestroyDIB();
    sheet.SwapDIBs(&other);
    EXPECT_EQ(HostAccess::hotspot(sheet), none);
    EXPECT_EQ(HostAccess::hotspot(other), small);
    EXPECT_EQ(HostAccess::hotspot(load(other, picture("ico/choice.ico"), 0, 0)), none) << "no hotspot: planes, depth";
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
// SPDX-License-Identifier: MIT
