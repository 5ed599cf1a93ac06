// Headers, packets and the extension area by rule. Pixels stand in the ledgers.
#include "codecs/tga/cTGAparser.h"
#include "platform/system.h"
#include "support/QuietLoads.h"
#include <numeric>

using namespace pixkit;
using namespace pixkit::test;

namespace {

class Tga : public QuietLoads {};

Bytes saved(const cPixSheet& sheet, bool Compress, bool ReduceBitDepth, bool AllowPreMultipliedPixels) {
    ByteArray stream;
    EXPECT_TRUE(sheet.SaveToStream_TGA(stream, Compress, ReduceBitDepth, AllowPreMultipliedPixels));
    return bytesOf(stream);
}

Bytes count(std::uint8_t from, std::size_t to) {
    Bytes bytes(to - from);
    std::iota(bytes.begin(), bytes.end(), from);
    return bytes;
}

Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

} // namespace

TEST_F(Tga, ATypeOrDepthIsKnownThatIsNoneOrTheSmallestPictureIsNot) {
    cPixSheet sheet;
    for (int value = 0; value < 256; ++value) {
        Bytes file = picture("tga/rgb-32-20.tga");
        file[2] = static_cast<std::uint8_t>(value);
        file.resize(file.size() + 400); // enough for whatever the change asks for
        if (value < 9 || value > 11) {  // those are packets, of which this makes too few
            EXPECT_EQ(sheet.LoadPicture_Stream(ByteArray(file)), value == 2 || value == 3) << value;
        }
        file[2] = 2;
        file[16] = static_cast<std::uint8_t>(value);
        const bool isDepth = value == 8 || value == 15 || value == 16 || value == 24 || value == 32;
        EXPECT_EQ(sheet.LoadPicture_Stream(ByteArray(file)), isDepth) << value;
        Bytes mapped = picture("tga/map-24-0-256.tga"); // indexes have 8 bits
        mapped[16] = static_cast<std::uint8_t>(value);
        EXPECT_EQ(sheet.LoadPicture_Stream(ByteArray(mapped)), value == 8) << value;
    }
    // Arrays below 20 bytes never come to the reader, so it is asked itself.
    const Bytes smallest = {0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 8, 0, 7};
    EXPECT_FALSE(cTGAparser().LoadStream(std::span(smallest).first(18), sheet, 0));
    EXPECT_TRUE(cTGAparser().LoadStream(smallest, sheet, 0));
}

// The place of the picture in the caller's array counts on one side of the comparison only.
TEST_F(Tga, AnAreaNearTheEndOfAnEmbeddedPictureIsFound) {
    const Bytes data = picture("tga/keyed-attributes-2.tga");
    for (const std::size_t before : {0U, 25U, 26U, 1000U}) {
        cPixSheet sheet;
        ASSERT_TRUE(
            sheet.LoadPicture_Stream(ByteArray(Bytes(before, 0xEE) + data), 32, 32, static_cast<std::int32_t>(before)));
        EXPECT_EQ(sheet.Alpha(), before < 26 ? AlphaNone : AlphaSimple) << "the footer of 26 bytes is behind the area";
    }
}

TEST_F(Tga, TheExtensionAreaSaysSomethingElse) {
    cPixSheet sheet;
    fill(sheet, 1, 1, {{100, 50, 25, 128}});
    sheet.Alpha(AlphaComplex);
    const platform::LocalTime before = platform::GetLocalTime();
    const Bytes file = saved(sheet, false, false, true);
    const platform::LocalTime after = platform::GetLocalTime();
    ASSERT_EQ(file.size(), 18U + 4 + 495 + 26);
    const auto word = [&](std::size_t at) { return file[22 + at] | file[22 + at + 1] << 8; };
    const auto seconds = [](const platform::LocalTime& t) { return (t.wHour * 60 + t.wMinute) * 60 + t.wSecond; };
    if (before.wDay == after.wDay) { // not at midnight
        EXPECT_TRUE(word(371) == before.wYear && word(367) == before.wMonth && word(369) == before.wDay);
        const int said = (word(373) * 60 + word(375)) * 60 + word(377);
        EXPECT_TRUE(said >= seconds(before) && said <= seconds(after)) << said;
    }
}

TEST_F(Tga, PacketsAreCutInTheWrongPlaces) {
    const Bytes rawRun = count(0, 128);
    const struct {
        const char* fault;
        Bytes grays; // one row
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
        cPixSheet sheet, again;
        draw(sheet, static_cast<std::int32_t>(row.grays.size()), 1, AlphaNone, [&](unsigned x, unsigned) {
            return Pixel{row.grays[x], row.grays[x], row.grays[x], 255};
        });
        const Bytes file = saved(sheet, true, true, false);
        const std::size_t dataStart = 18 + std::size_t{file[5]} * 3;
        EXPECT_EQ(file[2], row.coded.empty() ? 1 : 9);
        if (!row.coded.empty()) {
            EXPECT_EQ(Bytes(file.begin() + static_cast<std::ptrdiff_t>(dataStart), file.end() - 26), row.coded);
        }
        ASSERT_TRUE(again.LoadPicture_Stream(ByteArray(file)));
        EXPECT_EQ(pixelsOf(again), pixelsOf(sheet));
    }
}
// SPDX-License-Identifier: MIT
