// Pictures that the system's loader decodes or the system itself holds.
#include "platform/faults.h"
#include "platform/gdi.h"
#include "platform/pictures.h"
#include "support/PngLoading.h"
#include "support/SourceFolder.h"
#include <cstring>

using namespace pixkit;
using namespace pixkit::test;
using platform::PictureType;
using platform::SeamCall;

namespace {

class SystemPicture : public QuietLoads {};

Bytes sample(const char* name) {
    return readFile(sourceFolder() / "fuzz" / "seeds" / "picture" / name);
}

bool load(cPixSheet& sheet, const Bytes& data) {
    sheet.InitializeDIB(3, 2);
    const bool loaded = sheet.LoadPicture_Stream(ByteArray(data));
    EXPECT_EQ(sheet.Handle() != 0, loaded);
    return loaded;
}

// Draws one opaque pixel at 1, 0, one half transparent at 2, 0 and nothing on the other four of 3 x 2.
class Drawing final : public platform::StdPicture {
  public:
    explicit Drawing(PictureType type, std::int32_t width = 3) : m_type(type), m_width(width) {}
    PictureType Type() const noexcept override { return m_type; }
    platform::Handle handle() const noexcept override { return 0; }
    std::int32_t Width() const noexcept override { return m_width; }
    std::int32_t Height() const noexcept override { return 2; }
    bool Render(platform::Handle dc, std::int32_t x, std::int32_t y, std::int32_t,
                std::int32_t) const noexcept override {
        cPixSheet ink;
        test::fill(ink, 2, 1, {{10, 20, 30, 255}, {40, 0, 100, 128}});
        const auto from = ink.LoadDIBinDC(true);
        return platform::BitBlt(dc, x + 1, y, 1, 1, from, 0, 0, platform::rasterCopy) &&
               platform::AlphaBlend(dc, x + 2, y, 1, 1, from, 1, 0, 1, 1, {.AlphaFormat = 1});
    }

  private:
    PictureType m_type;
    std::int32_t m_width;
};

// A record of an EMF or, with words, of a WMF.
void put(Bytes& bytes, std::initializer_list<std::uint32_t> values, unsigned size) {
    for (const std::uint32_t value : values)
        for (unsigned i = 0; i < size; ++i)
            bytes.push_back(static_cast<std::uint8_t>(value >> 8 * i));
}

// An EMF that fills the left half of 40 x 20 pixels (at 96 to the inch) with red.
Bytes enhancedMetafile() {
    Bytes records;
    put(records, {39, 24, 1, 0, 0xFF, 0}, 4); // EMR_CREATEBRUSHINDIRECT: solid red
    put(records, {37, 12, 1}, 4);             // EMR_SELECTOBJECT
    put(records, {37, 12, 0x80000008}, 4);    // the pen that draws nothing
    put(records, {43, 24, 0, 0, 21, 21}, 4);  // EMR_RECTANGLE
    put(records, {14, 20, 0, 16, 20}, 4);     // EMR_EOF
    Bytes header;
    put(header, {1, 100, 0, 0, 39, 19, 0, 0, 1058, 529, 0x464D4520, 0x10000}, 4);
    put(header, {static_cast<std::uint32_t>(100 + records.size()), 6}, 4);
    put(header, {2, 0}, 2);
    put(header, {0, 0, 0, 1920, 1080, 508, 286, 0, 0, 0}, 4); // 3780 pixels a metre
    header.resize(100);
    return header + records;
}

// A WMF with placeable header, half an inch by a quarter, that fills its left half with red.
Bytes placeableMetafile() {
    Bytes records;
    put(records, {5, 0, 0x020B, 0, 0}, 2);          // META_SETWINDOWORG
    put(records, {5, 0, 0x020C, 20, 40}, 2);        // META_SETWINDOWEXT
    put(records, {7, 0, 0x02FC, 0, 0xFF, 0, 0}, 2); // META_CREATEBRUSHINDIRECT
    put(records, {4, 0, 0x012D, 0}, 2);             // META_SELECTOBJECT
    put(records, {8, 0, 0x02FA, 5, 0, 0, 0, 0}, 2); // META_CREATEPENINDIRECT: none
    put(records, {4, 0, 0x012D, 1}, 2);
    put(records, {7, 0, 0x041B, 21, 21, 0, 0}, 2); // META_RECTANGLE
    put(records, {3, 0, 0}, 2);
    Bytes placing;
    put(placing, {0xCDD7, 0x9AC6, 0, 0, 0, 720, 360, 1440, 0, 0}, 2);
    std::uint32_t checksum = 0;
    for (std::size_t i = 0; i < placing.size(); i += 2)
        checksum ^= static_cast<std::uint32_t>(placing[i] | placing[i + 1] << 8);
    put(placing, {checksum}, 2);
    Bytes header;
    put(header, {1, 9, 0x300, static_cast<std::uint32_t>(9 + records.size() / 2), 0, 2, 8, 0, 0}, 2);
    return placing + header + records;
}

} // namespace

TEST_F(SystemPicture, AJpegOfSomeKindHasWrongColours) {
    if (!platform::canLoadJpeg()) FAIL() << "libturbojpeg is needed for this test: scripts/setup.sh";
    for (const char* kind : {"baseline", "progressive", "gray", "restart", "cmyk"}) {
        cPixSheet sheet;
        ASSERT_TRUE(load(sheet, sample(kind))) << kind;
        EXPECT_EQ(sheet.ImageType(), imgBitmap);
        EXPECT_EQ(sheet.Alpha(), AlphaNone);
        ASSERT_EQ(sheet.Width(), 24);
        ASSERT_EQ(sheet.Height(), 17);
        // From red above to blue below, or the grays of the two.
        const bool isGray = kind[0] == 'g';
        const Pixel above = pixelsOf(sheet).front();
        const Pixel below = pixelsOf(sheet).back();
        const auto isNear = [](int value, int expected) { return std::abs(value - expected) < 24; };
        EXPECT_TRUE(isNear(above[2], isGray ? 76 : 255) && isNear(above[0], isGray ? 76 : 0) && above[3] == 255)
            << kind << ' ' << +above[0] << ' ' << +above[2];
        EXPECT_TRUE(isNear(below[0], isGray ? 29 : 255) && isNear(below[2], isGray ? 29 : 0) && below[3] == 255)
            << kind << ' ' << +below[0] << ' ' << +below[2];
    }
}

TEST_F(SystemPicture, AJpegThatLiesOrLacksItsEndDoesHarm) {
    for (const char* kind : {"baseline", "progressive", "cmyk"}) {
        const Bytes whole = sample(kind);
        for (std::size_t length = 20; length < whole.size(); length += 7) {
            cPixSheet sheet;
            if (load(sheet, {whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)})) {
                EXPECT_EQ(sheet.Width(), 24) << length;
            }
        }
        // SOF0 or SOF2: sizes that so little data cannot fill, then none.
        const Bytes marker{0xFF, static_cast<std::uint8_t>(kind[0] == 'p' ? 0xC2 : 0xC0)};
        const auto frame = std::search(whole.begin(), whole.end(), marker.begin(), marker.end());
        ASSERT_NE(frame, whole.end()) << kind;
        const auto at = static_cast<std::size_t>(frame - whole.begin());
        if (platform::canLoadMetafiles()) continue; // what the system does with its memory is its own affair
        for (const std::uint8_t high : Bytes{0xFF, 0x40, 0x00}) {
            Bytes lying = whole;
            for (const std::size_t byte : {5U, 7U})
                lying[at + byte] = high;
            lying[at + 6] = lying[at + 8] = 0;
            cPixSheet sheet;
            EXPECT_FALSE(load(sheet, lying)) << kind << +high;
        }
    }
}

TEST_F(SystemPicture, WithoutItsLoaderAPictureLeavesSomethingBehind) {
    const Bytes data = sample("baseline");
    for (const SeamCall call : {SeamCall::oleLoadPicture, SeamCall::getObject, SeamCall::getDIBits,
                                SeamCall::createDIBSection, SeamCall::loadLibrary, SeamCall::getProcAddress}) {
        cPixSheet sheet;
        const bool isOnlyPortable = call == SeamCall::loadLibrary || call == SeamCall::getProcAddress;
        {
            const platform::ScopedFault fault(call);
            EXPECT_EQ(load(sheet, data), isOnlyPortable && platform::canLoadMetafiles()) << static_cast<int>(call);
        }
        EXPECT_TRUE(load(sheet, data)) << "not usable afterwards";
    }
}

TEST_F(SystemPicture, WhatAMetafileDrawsIsNotOpaqueOrTheRestNotTransparent) {
    const Pixel clear{0, 0, 0, 0};
    for (const PictureType type : {PictureType::metafile, PictureType::enhancedMetafile}) {
        cPixSheet sheet;
        const Drawing drawing(type);
        ASSERT_TRUE(sheet.LoadPicture_StdPicture(&drawing));
        EXPECT_EQ(sheet.ImageType(), type == PictureType::metafile ? imgWMF : imgEMF);
        EXPECT_EQ(sheet.Alpha(), AlphaComplex);
        const std::vector<Pixel> seen = pixelsOf(sheet);
        EXPECT_EQ(seen[0], clear);
        EXPECT_EQ(seen[1], (Pixel{10, 20, 30, 255}));
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_NEAR(seen[2][i], (Pixel{40, 0, 100, 128})[i], 1) << i; // systems round differently
        EXPECT_EQ(std::vector<Pixel>(seen.begin() + 3, seen.end()), std::vector<Pixel>(3, clear));
    }
    cPixSheet sheet;
    for (const Drawing& refused : {Drawing(PictureType::metafile, 0), Drawing(PictureType::metafile, 1 << 30),
                                   Drawing(PictureType::none), Drawing(PictureType::uninitialized)}) {
        sheet.InitializeDIB(3, 2);
        EXPECT_FALSE(sheet.LoadPicture_StdPicture(&refused));
        EXPECT_EQ(sheet.Handle(), 0);
    }
}

TEST_F(SystemPicture, MetafilesAreNotDrawnAtTheirNaturalSize) {
    for (const bool enhanced : {false, true}) {
        cPixSheet sheet;
        const bool loaded = load(sheet, enhanced ? enhancedMetafile() : placeableMetafile());
        ASSERT_EQ(loaded, platform::canLoadMetafiles()) << enhanced;
        if (!loaded) continue;
        EXPECT_EQ(sheet.ImageType(), enhanced ? imgEMF : imgWMF);
        EXPECT_EQ(sheet.Alpha(), AlphaSimple);
        EXPECT_NEAR(sheet.Width(), enhanced ? 40 : 48, 2);
        EXPECT_NEAR(sheet.Height(), enhanced ? 20 : 24, 2);
        std::int32_t alpha = 0;
        EXPECT_EQ(sheet.GetPixel(5, 10, &alpha), 0xFF); // red
        EXPECT_EQ(alpha, 255);
        EXPECT_EQ(sheet.GetPixel(sheet.Width() - 5, 10, &alpha), 0);
        EXPECT_EQ(alpha, 0);
    }
}

TEST_F(SystemPicture, ABitmapIsNotTakenOverAsItIs) {
    cPixSheet sheet;
    sheet.InitializeDIB(3, 2);
    EXPECT_FALSE(sheet.LoadPicture_StdPicture(nullptr));
    EXPECT_EQ(sheet.Handle(), 0);

    const Pixel clear{0, 0, 0, 0}, half{5, 6, 7, 128}, bright{200, 100, 50, 128}, bare{9, 8, 7, 0};
    struct Case {
        Pixel first, second, expected; // of the first
        AlphaTypeEnum alpha;
        eImageFormat type;
    };
    for (const Case& c : {Case{half, clear, half, AlphaComplex, imgBmpPARGB},
                          Case{bright, clear, {100, 50, 25, 128}, AlphaComplex, imgBmpARGB},
                          Case{bare, bare, {9, 8, 7, 255}, AlphaNone, imgBitmap}}) {
        cPixSheet source;
        test::fill(source, 2, 1, {c.first, c.second});
        const auto picture = platform::OleCreatePictureIndirect(source.Handle(), PictureType::bitmap, false);
        ASSERT_TRUE(picture && sheet.LoadPicture_StdPicture(picture.get()));
        EXPECT_EQ(pixelsOf(sheet)[0], c.expected);
        EXPECT_EQ(sheet.Alpha(), c.alpha);
        EXPECT_EQ(sheet.ImageType(), c.type);
    }
}
