// JPEG files of every usual kind (fuzz/seeds/picture), whole, cut and damaged, are read as libjpeg reads them, to the
// last bit, and as ImageMagick does where there are four inks.
#include "oracle/Readers.h"
#include "oracle/libjpegVerdict.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

void expectSame(const Bytes& file) {
    cPixSheet sheet;
    const bool loaded = sheet.LoadPicture_Stream(ByteArray(file));
    const JpegPicture theirs = decodeJpeg(file.data(), file.size());
    // What the decoder only warns of must come out as a picture, and what it has nothing of must not; between the two,
    // behind the last row, it depends on who asks.
    EXPECT_TRUE(loaded ? theirs.rows != 0 : theirs.warnings < 0);
    if (loaded && theirs.rows == theirs.height) {
        EXPECT_TRUE(pixelsOf(sheet) == theirs.pixels);
    }
}

} // namespace

TEST(JpgReaderOracle, PixelsDifferFromLibjpegs) {
    std::mt19937 random(6);
    int kinds = 0;
    for (const auto& entry : std::filesystem::directory_iterator(sourceFolder() / "fuzz/seeds/picture")) {
        const Bytes whole = readFile(entry.path());
        const std::string name = entry.path().filename().string();
        if (name == "gif" || name == "cmyk") continue;
        SCOPED_TRACE(name);
        expectSame(whole);
        for (std::size_t size = 200; size < whole.size(); size += 97)
            expectSame(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
        const Bytes scan = {0xFF, 0xDA}; // headers that lie are another question
        const auto start = std::search(whole.begin(), whole.end(), scan.begin(), scan.end()) - whole.begin() + 16;
        for (int round = 0; round < 60; ++round) {
            Bytes damaged = whole;
            damaged[static_cast<std::size_t>(start) + random() % (whole.size() - static_cast<std::size_t>(start))] =
                static_cast<std::uint8_t>(random());
            expectSame(damaged);
        }
        ++kinds;
    }
    EXPECT_GE(kinds, 18) << "scripts/draw_test_pictures.py --programs";
}

// ImageMagick takes inks to be inverted always, we only where Adobe's marker stands, which is what it is good for;
// without it, ours are the negative's.
TEST(JpgReaderOracle, InksAreMixedOtherwiseThanByImageMagick) {
    const TemporaryFolder folder;
    Bytes jpeg = readFile(sourceFolder() / "fuzz/seeds/picture/cmyk");
    constexpr std::string_view adobe = "Adobe";
    const auto marker = std::search(jpeg.begin(), jpeg.end(), adobe.begin(), adobe.end());
    ASSERT_GT(jpeg.end() - marker, 11);
    const struct {
        const char* kind;
        char marker;
        std::uint8_t transform;
        const char* treatment;
    } rows[] = {{"CMYK", 'A', 0, ""}, {"YCCK", 'A', 2, ""}, {"CMYK, not marked", 'B', 0, "-negate"}};
    for (const auto& row : rows) {
        marker[0] = static_cast<std::uint8_t>(row.marker);
        marker[11] = row.transform;
        writeFile(folder.path(u8"a.jpg"), jpeg);
        EXPECT_EQ(shell(folder, std::string("convert-im6.q16 a.jpg ") + row.treatment +
                                    " -colorspace sRGB -depth 8 PNG32:out.png"),
                  0);
        const Read theirs = withLibpng(readFile(folder.path(u8"out.png")));
        cPixSheet sheet;
        ASSERT_TRUE(theirs && sheet.LoadPicture_Stream(ByteArray(jpeg)));
        EXPECT_LE(difference(sheet, *theirs), 1) << row.kind;
    }
}
// SPDX-License-Identifier: MIT
