// What is refused before a reader sees it, the order of readers, slices, the kept bytes, and pictures that programs
// have in memory already.
#include "codecs/Formats.h"
#include "codecs/StatedSize.h"
#include "codecs/tga/cTGAparser.h"
#include "loading/ForeignPictures.h"
#include "loading/LoadRequest.h"
#include "platform/pictures.h"
#include "shared/AlphaType.h"
#include "shared/resources.h"
#include "support/QuietLoads.h"
#include <algorithm>
#include <optional>
#include <stdexcept>

using namespace pixkit;
using namespace pixkit::test;

namespace {

class LoadDispatch : public QuietLoads {
  protected:
    ~LoadDispatch() override { setResourceProvider({}); }

    cPixSheet sheet;
};

} // namespace

// Some data passes for two formats; and what a reader has refused as damaged some systems' loaders fall over.
TEST_F(LoadDispatch, AnotherReaderIsAskedFirstOrTheSystemUnasked) {
    // Of a cursor as TGA the hotspot is the width, the lower half of its size the height, and the upper half the depth.
    Bytes cursor = picture("ico/two-24-cursor.ico");
    constexpr std::uint8_t hotspotAndSize[] = {1, 0, 1, 0, 40, 0, 8, 0};
    std::ranges::copy(hotspotAndSize, cursor.begin() + 10);
    cursor.resize(22 + 0x080028);
    ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(cursor)));
    EXPECT_EQ(sheet.ImageType(), imgCursor);
    cursor[4] = 0; // none in it
    ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(cursor)));
    EXPECT_EQ(sheet.ImageType(), imgTGA);
    // No screen's table, an image without pixels, which has one, and another image, which has one too or has not.
    Bytes gif{'G', 'I',  'F', '8', '9', 'a', 1, 0, 1, 0, 0,    0, 0, 0x2C, 0, 0, 0, 0, 0, 0,   1,
              0,   0x80, 0,   0,   0,   1,   1, 1, 2, 0, 0x2C, 0, 0, 0,    0, 1, 0, 1, 0, 0x80};
    Bytes gifOfOneTable = gif;
    gifOfOneTable.back() = 0;
    const struct {
        const char* what;
        Bytes start;
        bool isAsked;
    } rows[] = {
        {"icon", {0, 0, 1, 0, 1, 0}, false},
        {"cursor", {0, 0, 2, 0, 0, 1}, false},
        {"no icons", {0, 0, 1, 0, 0, 0}, true},
        {"gif", {'g', 'I', 'F', '8', '0', 'x'}, false},
        {"PNG", {0x89, 'P', 'N', 'G', 1, 2}, true},
        {"BMP", {'B', 'M', 0, 0, 0, 0}, false},
        {"GIF with colours", {'G', 'I', 'F', '8', '9', 'a', 1, 0, 1, 0, 0x80}, true},
        {"GIF with a table for each image", gif, true},
        {"GIF with a table for the first image alone", gifOfOneTable, false},
        {"JPEG", {0xFF, 0xD8, 0xFF, 0, 0, 0}, true},
    };
    for (const auto& row : rows) {
        Bytes data = row.start;
        data.resize(50, 0xF0);
        const platform::ScopedFault once(platform::SeamCall::oleLoadPicture, 0, 1);
        EXPECT_FALSE(sheet.LoadPicture_Stream(ByteArray(data)));
        EXPECT_NE(platform::faultDue(platform::SeamCall::oleLoadPicture), row.isAsked) << row.what;
    }
}

// A comment or DNL of JPEG files, too, whose length is not even that of the length.
TEST_F(LoadDispatch, APictureWithinABmpFileIsAnotherOrPassesALimit) {
    cPixSheet original, alone;
    Random(3).fill(original, 30, 20);
    for (const bool isPng : {true, false}) {
        ByteArray file;
        ASSERT_TRUE(isPng ? original.SaveToStream_PNG(file) : original.SaveToStream_JPG(file));
        if (!alone.LoadPicture_Stream(file) && !isPng && !platform::canLoadJpeg()) continue;
        Bytes embedded = picture("bmp/png.bmp"), whole = bytesOf(file);
        embedded.resize(54);
        embedded[30] = isPng ? 5 : 4;
        std::fill_n(embedded.begin() + 34, 4, std::uint8_t{0}); // no length is said
        embedded.insert(embedded.end(), whole.begin(), whole.end());
        ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(embedded))) << isPng;
        EXPECT_TRUE(pixelsOf(sheet) == pixelsOf(alone) && sheet.Alpha() == alone.Alpha());
        EXPECT_EQ(sheet.ImageType(), sheet.Alpha() == AlphaNone ? imgBitmap : imgBmpARGB);
        EXPECT_EQ(statedSize(embedded).width, 30);
        sheet.MaxPixels(30 * 20 - 1);
        EXPECT_FALSE(sheet.LoadPicture_Stream(ByteArray(embedded)));
        sheet.MaxPixels(0);
        if (isPng) continue;
        whole.insert(whole.begin() + 2, {0xFF, 0xFE, 0, 0, 0xFF, 0xDC, 0, 0});
        ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(whole)));
        EXPECT_TRUE(pixelsOf(sheet) == pixelsOf(alone));
    }
}

TEST_F(LoadDispatch, WhatAReaderRefusedIsNotShownByTheSystemsLoaderOrALackOfMemoryMakesItAnotherPicture) {
    const ByteArray lacksAColor(picture("gif/bad-last-colour-behind-file.gif")), good(picture("gif/table-local.gif"));
    cPixSheet shown; // some loaders refuse it too
    LoadSystemPicture(lacksAColor.bytes(), shown);
    sheet.LoadPicture_Stream(lacksAColor);
    EXPECT_EQ(sheet.ImageType(), shown.ImageType());
    // Where the loader is our own, its bitmap comes before the pixels.
    const platform::ScopedFault once(platform::SeamCall::createDIBSection, platform::canLoadMetafiles() ? 0 : 1, 1);
    EXPECT_FALSE(sheet.LoadPicture_Stream(good));
}

template <class Bytes>
concept Loads = requires(cPixSheet sheet, Bytes& bytes) {
    sheet.LoadPicture_Stream(bytes);
};

TEST_F(LoadDispatch, ASpanIsReadOtherwiseThanAnArray) {
    const auto file = picture("png/interlaced-5x5.png");
    auto behind = file;
    behind.insert(behind.begin(), 9, 0);
    cPixSheet other;
    ByteArray kept;
    ASSERT_TRUE(other.LoadPicture_Stream(ByteArray(file)));
    ASSERT_TRUE(sheet.LoadPicture_Stream(std::span(behind), 0, 0, 9, 0, true));
    EXPECT_EQ(pixelsOf(sheet), pixelsOf(other));
    ASSERT_TRUE(sheet.GetOrginalFormat(kept));
    EXPECT_TRUE(std::ranges::equal(kept.bytes(), behind));
    EXPECT_TRUE(sheet.LoadPicture_Stream(std::string(file.begin(), file.end())));
    EXPECT_TRUE(sheet.LoadPicture_Stream(std::vector<char>(file.begin(), file.end()), 0, 0));
    EXPECT_TRUE(sheet.LoadPicture_Stream(std::as_bytes(std::span(behind)), 0, 0, 9));
    static_assert(Loads<const std::string> && !Loads<const char[23]>, "the name of a file is none of bytes");
    EXPECT_FALSE(sheet.LoadPicture_Stream(std::span<const std::uint8_t>(sheet.BitsPointer(), 100)));
    if constexpr (sizeof(std::size_t) > 4) { // nothing of it is looked at
        EXPECT_FALSE(sheet.LoadPicture_Stream(std::span(file.data(), std::size_t{1} << sizeof(std::size_t) * 4)));
        EXPECT_EQ(sheet.LastErrorText(), "more bytes than an array can have");
    }
}

TEST_F(LoadDispatch, AReaderNamesAnotherReasonThanItRefusesFor) {
    constexpr const char* noStore = "no memory for the pixels";
    constexpr auto store = platform::SeamCall::createDIBSection;
    const struct {
        FileFormat reader;
        const char* name;
        const char* reason;
        std::optional<platform::SeamCall> failing = {};
    } rows[] = {
        {FileFormat::png, "png/interlaced-5x5.png", noStore, store},
        {FileFormat::gif, "gif/table-local.gif", "GIF: the system's loader refuses the frame",
         platform::SeamCall::oleLoadPicture},
        {FileFormat::gif, "gif/table-local.gif", "GIF: the picture of the system's loader cannot be taken over",
         platform::SeamCall::getObject},
        {FileFormat::gif, "gif/bad-last-colour-behind-file.gif", "GIF: the data ends where a colour is looked for"},
        {FileFormat::gif, "gif/transparent-1.gif", "GIF: the pixels cannot be read", platform::SeamCall::getDIBits},
        {FileFormat::ico, "ico/bad-kind.ico", "no header of an icon file"},
        {FileFormat::ico, "ico/damaged-png-4-times.ico", "IDAT: the compressed data is damaged",
         platform::SeamCall::loadLibrary},
        {FileFormat::bmp, "bmp/rle8.bmp", noStore, store},
        {FileFormat::tga, "tga/bad-type-4.tga", "TGA: no type of image that is read"},
        {FileFormat::tga, "tga/bad-width-0.tga", "TGA: no columns or no rows"},
        {FileFormat::tga, "tga/bad-depth-12.tga", "TGA: no depth that is read, or indexes without a colour map"},
        {FileFormat::tga, "tga/bad-map-empty.tga", "TGA: no entries of the colour map that are read"},
        {FileFormat::tga, "tga/bad-cut.tga", "TGA: too short for its picture"},
    };
    for (const auto& row : rows) {
        const Bytes bytes = picture(row.name);
        const ByteArray array(bytes);
        LoadRequest request(array, 0, bytes.size(), IconRequest(32, 32, 32));
        const auto format = std::ranges::find(formats(), row.reader, &Format::id);
        std::optional<platform::ScopedFault> fault;
        if (row.failing) fault.emplace(*row.failing);
        EXPECT_EQ(format->read(request, sheet).why.reason(), row.reason) << row.name;
    }
    EXPECT_EQ(cTGAparser().LoadStream(Bytes(18), sheet, 0).why.reason(), "TGA: too short for a header");
    EXPECT_EQ(LoadSystemPicture(Bytes(50, 0xF0), sheet).why.reason(), "the system's loader refuses it");
    const platform::ScopedFault noObject(platform::SeamCall::getObject);
    EXPECT_EQ(LoadSystemPicture(picture("gif/table-local.gif"), sheet).why.reason(),
              "the pixels of the bitmap cannot be read");
}

TEST_F(LoadDispatch, TheProvidersResourcesAreMixedUp) {
    const auto refuses = [&](const ResourceId& index, const ResourceId& section) {
        sheet.InitializeDIB(1, 1);
        return !sheet.LoadPicture_Resource(index, section) && sheet.Handle() == 0;
    };
    EXPECT_TRUE(refuses(1, 0) && refuses(1, "PICTURES")) << "nobody provides anything";
    cPixSheet logo;
    ASSERT_TRUE(logo.InitializeDIB(2, 1));
    setResourceProvider({[&](const ResourceId& index, PictureResource kind) {
                             const bool isLogo = index == ResourceId("logo") && kind == PictureResource::bitmap;
                             return platform::OleCreatePictureIndirect(isLogo ? logo.Handle() : 0,
                                                                       platform::PictureType::bitmap, false);
                         },
                         [&](const ResourceId& index, const std::string& section) {
                             if (section != "PICTURES") throw std::out_of_range(section);
                             return index == ResourceId(7)
                                        ? Bytes{0xEE, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0, 24, 0, 1, 2, 3}
                                        : Bytes();
                         }});
    EXPECT_TRUE(sheet.LoadPicture_Resource("logo", 0) && sheet.Width() == 2);
    EXPECT_TRUE(sheet.LoadPicture_Resource(7, "PICTURES", 32, 32, 1) && sheet.Width() == 1);
    EXPECT_TRUE(refuses(7, "PICTURES")) << "streamStart does not count";
    EXPECT_TRUE(refuses(8, "PICTURES") && refuses("logo", 1) && refuses(7, 0));
    EXPECT_TRUE(refuses(7, "OTHERS")) << "what a provider throws";
    sheet.MaxPixels(1);
    EXPECT_TRUE(refuses("logo", 0));
    EXPECT_EQ(sheet.LastErrorText(), "more pixels than MaxPixels allows");
    sheet.MaxMemory(3);
    EXPECT_FALSE(sheet.LoadPicture_Resource(7, "PICTURES", 32, 32, 1));
    EXPECT_EQ(sheet.LastErrorText(), "more memory than MaxMemory allows");
    expectedReports = {"LoadPicture_Resource"};
}

// What a metafile drew over black and over white.
TEST(AlphaType, APixelGetsTheWrongAlphaFromTwoBackgrounds) {
    Bytes overBlack = {0, 0, 0, 9, 1, 2, 3, 9, 255, 255, 255, 9, 60, 0, 10, 9};
    const Bytes overWhite = {255, 255, 255, 7, 1, 2, 3, 7, 0, 0, 0, 7, 190, 127, 138, 7};
    const auto result = [&](std::size_t first, std::size_t count) {
        return alphaFromTwoBackgrounds({&overBlack[4 * first], count, 1, 4 * count},
                                       {&overWhite[4 * first], count, 1, 4 * count});
    };
    EXPECT_EQ(result(1, 2), AlphaNone) << "drawn, and inverted";
    EXPECT_EQ(result(0, 3), AlphaSimple);
    EXPECT_EQ(result(0, 4), AlphaComplex);
    EXPECT_EQ(overBlack, (Bytes{0, 0, 0, 0, 1, 2, 3, 255, 255, 255, 255, 255, 60, 0, 10, 128}));
}
// SPDX-License-Identifier: MIT
