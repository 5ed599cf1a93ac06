// Pictures that the system's loader decodes or the system itself holds. Which pixels JPEG files have is tests/oracle's
// question.
#include "platform/gdi.h"
#include "platform/pictures.h"
#include "support/AllocationFault.h"
#include "support/QuietLoads.h"

using namespace pixkit;
using namespace pixkit::test;
using platform::PictureType;

namespace {

class SystemPicture : public QuietLoads {};

bool load(cPixSheet& sheet, const Bytes& data) {
    sheet.InitializeDIB(3, 2);
    const bool loaded = sheet.LoadPicture_Stream(ByteArray(data));
    EXPECT_EQ(sheet.Handle() != 0, loaded);
    return loaded;
}

// Draws one opaque pixel at 1, 0, one half transparent at 2, 0 and nothing on the other four of 3 x 2.
class Drawing final : public platform::StdPicture {
  public:
    explicit Drawing(PictureType type, std::int32_t width = 3, cPixSheet* changed = nullptr,
                     std::int32_t changedWidth = 3)
        : m_type(type), m_width(width), m_changed(changed), m_changedWidth(changedWidth) {}
    PictureType Type() const noexcept override { return m_type; }
    platform::Handle handle() const noexcept override { return 0; }
    std::int32_t Width() const noexcept override { return m_width; }
    std::int32_t Height() const noexcept override { return 2; }
    bool Render(platform::Handle dc, std::int32_t x, std::int32_t y, std::int32_t,
                std::int32_t) const noexcept override {
        if (m_changed != nullptr) return m_changed->InitializeDIB(m_changedWidth, 2);
        cPixSheet ink;
        fill(ink, 2, 1, {{10, 20, 30, 255}, {40, 0, 100, 128}});
        const auto from = ink.LoadDIBinDC(true);
        return platform::BitBlt(dc, x + 1, y, 1, 1, from, 0, 0, platform::rasterCopy) &&
               platform::AlphaBlend(dc, x + 2, y, 1, 1, from, 1, 0, 1, 1, {.AlphaFormat = 1});
    }

  private:
    PictureType m_type;
    std::int32_t m_width;
    cPixSheet* m_changed; // while it is drawn, as an object of the program's may do
    std::int32_t m_changedWidth;
};

} // namespace

TEST_F(SystemPicture, AJpegThatLiesTakesMemoryOrTime) {
#ifdef PIXKIT_FOREIGN
    if (!platform::canLoadJpeg()) GTEST_SKIP() << "libturbojpeg is for another processor here";
#endif
    if (!platform::canLoadJpeg()) FAIL() << "libturbojpeg is needed for this test: scripts/setup.sh";
    cPixSheet sheet;
    const Bytes whole = readFile(sourceFolder() / "fuzz" / "seeds" / "picture" / "baseline");
    ASSERT_TRUE(load(sheet, whole));
    EXPECT_EQ(sheet.ImageType(), imgBitmap);
    const Pixel above = pixelsOf(sheet).front(); // red, and blue below
    EXPECT_TRUE(above[2] > 230 && above[0] < 25 && above[3] == 255);
    const struct {
        const char* what;
        int width, height;
        std::size_t bytes; // of the file, filled up
        int scans;         // more of all three components, without codes
    } rows[] = {{"so little data cannot fill it", 0xFF00, 0xFF00, 0, 0},
                {"nor this", 0x4000, 0x4000, 0, 0},
                {"there is none of it", 0, 0, 0, 0},
                {"no store holds it", 65500, 16376, 1100000, 0},
                {"all its blocks again and again", 8192, 8192, 70000, 40}};
    for (const auto& row : rows) {
        Bytes data = whole;
        const Bytes marker{0xFF, 0xC0}, scan{0xFF, 0xDA, 0, 12, 3};
        const auto frame = std::search(data.begin(), data.end(), marker.begin(), marker.end());
        const int sides[] = {row.height >> 8, row.height & 255, row.width >> 8, row.width & 255};
        std::transform(std::begin(sides), std::end(sides), frame + 5,
                       [](int byte) { return static_cast<std::uint8_t>(byte); });
        for (int i = 0; i < row.scans; ++i)
            data.insert(data.end(), scan.begin(), scan.end());
        data.resize(std::max(data.size(), row.bytes));
        platform::ScopedFault once(platform::SeamCall::createDIBSection, 0, 1);
        EXPECT_FALSE(sheet.LoadPicture_Stream(ByteArray(data)));
        EXPECT_EQ(sheet.LastErrorText(), "JPEG: its size or its scans are out of proportion to its bytes");
        EXPECT_TRUE(platform::faultDue(platform::SeamCall::createDIBSection)) << row.what;
    }
}

// Pixels of full inks are what is there before. Those of a file without its end have been decoded nevertheless.
TEST_F(SystemPicture, AJpegOfInksIsDecodedTwiceOrRefusedForItsColors) {
    if (!platform::canLoadJpeg() || platform::canLoadMetafiles())
        GTEST_SKIP() << "the system's loader has its own ways";
    Bytes data{0xFF, 0xD8};
    const auto segment = [&](std::uint8_t marker, const Bytes& content) {
        data.insert(data.end(), {0xFF, marker, 0, static_cast<std::uint8_t>(content.size() + 2)});
        data.insert(data.end(), content.begin(), content.end());
    };
    Bytes steps(65, 16), ofFirst(19), ofOthers(18);
    steps[0] = ofFirst[0] = 0;
    ofFirst[1] = ofFirst[2] = ofOthers[1] = 1; // a code of one bit, in the first table one of two as well
    ofFirst[18] = 8;
    ofOthers[0] = 0x10;
    segment(0xDB, steps);
    segment(0xC0, {8, 0, 16, 0, 16, 4, 1, 0x11, 0, 2, 0x11, 0, 3, 0x11, 0, 4, 0x11, 0});
    segment(0xC4, ofFirst);
    segment(0xC4, ofOthers);
    segment(0xDA, {4, 1, 0, 2, 0, 3, 0, 4, 0, 0, 63, 0});
    data.insert(data.end(), {0x9F, 0xD3, 0xFA, 0x7F, 0x4F, 0xE0, 0x00, 0x00, 0x0F, 0xFF, 0xD9});
    cPixSheet sheet;
    const AllocationWatch whole;
    ASSERT_TRUE(load(sheet, data));
    const long oneTime = whole.count();
    EXPECT_EQ(pixelsOf(sheet), std::vector<Pixel>(256, Pixel{255, 255, 255, 255}));
    data.resize(data.size() - 2);
    const AllocationWatch early;
    ASSERT_TRUE(load(sheet, data));
    EXPECT_LT(early.count(), oneTime * 5 / 4);
    EXPECT_EQ(pixelsOf(sheet), std::vector<Pixel>(256, Pixel{255, 255, 255, 255}));
}

TEST_F(SystemPicture, AMetafileIsNotDrawnAsItIs) {
    cPixSheet sheet;
    const Pixel clear{0, 0, 0, 0};
    sheet.InitializeDIB(3, 2);
    EXPECT_TRUE(!sheet.LoadPicture_StdPicture(nullptr) && sheet.Handle() == 0);
    for (const PictureType type : {PictureType::metafile, PictureType::enhancedMetafile}) {
        const Drawing drawing(type);
        ASSERT_TRUE(sheet.LoadPicture_StdPicture(&drawing));
        EXPECT_EQ(sheet.ImageType(), type == PictureType::metafile ? imgWMF : imgEMF);
        EXPECT_EQ(sheet.Alpha(), AlphaComplex);
        std::vector<Pixel> seen = pixelsOf(sheet);
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(seen[2][i], (Pixel{40, 0, 100, 128})[i], 1) << i; // systems round differently
        seen[2] = clear;
        EXPECT_EQ(seen, (std::vector<Pixel>{clear, {10, 20, 30, 255}, clear, clear, clear, clear}));
    }
    for (const Drawing& refused :
         {Drawing(PictureType::metafile, 0), Drawing(PictureType::metafile, 1 << 30),
          Drawing(PictureType::metafile, 3, &sheet), Drawing(PictureType::metafile, 3, &sheet, 900),
          Drawing(PictureType::none), Drawing(PictureType::uninitialized)}) {
        sheet.InitializeDIB(3, 2);
        EXPECT_FALSE(sheet.LoadPicture_StdPicture(&refused));
        EXPECT_EQ(sheet.Handle(), 0);
    }
    const Drawing twice(PictureType::metafile);
    sheet.MaxMemory(3 * 2 * 8 - 1);
    EXPECT_FALSE(sheet.LoadPicture_StdPicture(&twice));
    EXPECT_EQ(sheet.LastErrorText(), "more memory than MaxMemory allows");
    sheet.MaxMemory(0);
    // Files, where the system draws them: red on the left of a picture of its natural size.
    for (const std::string kind : {"emf", "wmf"}) {
        const bool loaded = load(sheet, readFile(sourceFolder() / "tests/data/metafiles" / ("red." + kind)));
        ASSERT_EQ(loaded, platform::canLoadMetafiles()) << kind;
        if (!loaded) continue;
        EXPECT_EQ(sheet.ImageType(), kind == "emf" ? imgEMF : imgWMF);
        EXPECT_EQ(sheet.Alpha(), AlphaSimple);
        EXPECT_NEAR(sheet.Width(), kind == "emf" ? 40 : 48, 2);
        std::int32_t alpha = 0;
        EXPECT_EQ(sheet.GetPixel(5, 10, &alpha), 0xFF);
        EXPECT_EQ(alpha, 255);
        EXPECT_EQ(sheet.GetPixel(sheet.Width() - 5, 10, &alpha), 0);
        EXPECT_EQ(alpha, 0);
    }
}
// SPDX-License-Identifier: MIT
