// What we write as TGA, ImageMagick and stb_image read with the same pixels, and what ImageMagick writes, so do we.
#include "codecs/tga/TgaBuilder.h"
#include "shared/modParsers.h"
#include "surface/HostAccess.h"
#include <cstdlib>
#include <stb/stb_image.h>

using namespace pixkit;
using namespace pixkit::test;

namespace {

// Noise of few values, so that there are runs, and few colours.
void fillWithNoise(cPixSheet& sheet, std::int32_t width, std::int32_t height, bool hasAlpha) {
    std::mt19937 random(static_cast<unsigned>(width));
    ASSERT_TRUE(sheet.InitializeDIB(width, height));
    for (std::int32_t i = 0; i < width * height * 4; ++i)
        sheet.BitsPointer()[i] = static_cast<std::uint8_t>(random() % 3 * 120);
    // The first pixel proves straight data with alpha.
    const Pixel straight{255, 255, 255, 128};
    std::copy(straight.begin(), straight.end(), sheet.BitsPointer());
    sheet.Alpha(iparseValidateAlphaChannel(HostAccess::pixels(sheet), true, hasAlpha ? 0 : -1).bIsAlpha);
}

// Runs the program in the folder, which keeps rows in the file's order unless told to orient them; what it left out
// tells how it went.
Bytes convert(const TemporaryFolder& folder, const std::string& arguments, const char8_t* result) {
    const std::string folderName = folder.path(u8"").string();
    std::system(("cd '" + folderName + "' && convert-im6.q16 " + arguments + " 2>messages.txt").c_str());
    return readFile(folder.path(result));
}

// From the top row, straight or as stored.
Bytes rgbaOf(const cPixSheet& sheet, bool asPreMultiplied) {
    ByteArray bits;
    EXPECT_TRUE(sheet.GetDIBbits(bits, false, false, true, true, false, 0, 0, 0, 0, asPreMultiplied));
    return bytesOf(bits);
}

} // namespace

// Premultiplied pixels are written as they are stored, and neither program heeds the area that says so.
TEST(TgaOracle, WhatIsWrittenIsReadDifferently) {
    for (const std::int32_t width : {1, 5, 128, 300}) {
        for (int options = 0; options < 16; ++options) {
            SCOPED_TRACE(std::to_string(width) + ", options " + std::to_string(options));
            const bool hasAlpha = (options & 4) != 0, isPremultiplied = (options & 8) != 0;
            const TemporaryFolder folder;
            cPixSheet sheet;
            fillWithNoise(sheet, width, 7, hasAlpha);
            const std::string name = folder.name(u8"ours.tga");
            ASSERT_TRUE(sheet.SaveToFile_TGA(name, (options & 1) != 0, (options & 2) != 0, isPremultiplied));
            const Bytes expected = rgbaOf(sheet, isPremultiplied);
            EXPECT_EQ(convert(folder, "ours.tga -auto-orient -depth 8 rgba:out", u8"out"), expected);
            int stbWidth = 0, stbHeight = 0, channels = 0;
            stbi_uc* const pixels = stbi_load(name.c_str(), &stbWidth, &stbHeight, &channels, 4);
            ASSERT_NE(pixels, nullptr);
            EXPECT_EQ(Bytes(pixels, pixels + expected.size()), expected);
            EXPECT_EQ(channels, hasAlpha ? 4 : 3);
            stbi_image_free(pixels);
        }
    }
}

TEST(TgaOracle, PixelsDifferFromImageMagicks) {
    const char* const ways[] = {"",
                                "-compress RLE",
                                "-type Palette",
                                "-type Palette -compress RLE",
                                "-colorspace Gray",
                                "-orient TopLeft",
                                "-orient BottomLeft -compress RLE"};
    for (const std::int32_t width : {13, 130}) {
        for (const bool hasAlpha : {false, true}) {
            for (const std::string way : ways) {
                if (hasAlpha && way.find("Palette") != std::string::npos) continue; // it keys the alpha
                const TemporaryFolder folder;
                cPixSheet sheet;
                fillWithNoise(sheet, width, 7, hasAlpha);
                ASSERT_TRUE(sheet.SaveToFile_TGA(folder.name(u8"ours.tga")));
                const std::string arguments = "ours.tga " + way + " -set colorspace sRGB theirs.tga";
                convert(folder, arguments, u8"theirs.tga");
                const Bytes expected = convert(folder, "theirs.tga -auto-orient -depth 8 rgba:out", u8"out");
                cPixSheet theirs;
                ASSERT_TRUE(theirs.LoadPicture_File(folder.name(u8"theirs.tga"))) << way;
                const Bytes ours = rgbaOf(theirs, true);
                ASSERT_EQ(ours.size(), expected.size()) << way;
                for (std::size_t i = 0; i < ours.size(); ++i) {
                    const int alpha = i % 4 == 3 ? 255 : expected[i / 4 * 4 + 3];
                    EXPECT_EQ(ours[i], expected[i] * alpha / 255) << way << ' ' << i;
                    if (HasFailure()) return;
                }
            }
        }
    }
}
