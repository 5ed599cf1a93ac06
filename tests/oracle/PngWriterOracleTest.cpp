// Written PNG files against libpng's pixels, and pngcheck's opinion of every chunk.
#include "support/Pictures.h"
#include "surface/cPixSheet.h"
#include <cstdlib>
#include <gtest/gtest.h>
#include <png.h>

using namespace pixkit;
using namespace pixkit::test;

namespace {

// Random pixels of few or many colours, gray or not, opaque, clear in places, or translucent.
void fillRandomly(cPixSheet& sheet, std::mt19937& random, unsigned kind) {
    const auto colours = 1U + random() % (kind % 2 == 0 ? 300 : 17);
    const bool isGray = kind / 2 % 2 == 0;
    const unsigned alphas = kind / 4 % 3;
    std::vector<Pixel> palette(kind / 12 % 2 == 0 ? colours : 5000);
    for (Pixel& pixel : palette) {
        const auto alpha = static_cast<std::uint8_t>(alphas == 0 ? 255 : alphas == 1 ? random() % 2 * 255 : random());
        const auto gray = random() % (alpha + 1U);
        for (std::size_t c = 0; c < 3; ++c)
            pixel[c] = static_cast<std::uint8_t>(isGray ? gray / 17 * 17 : random() % (alpha + 1U));
        pixel[3] = alpha;
    }
    std::vector<Pixel> pixels(static_cast<std::size_t>(sheet.Width() * sheet.Height()));
    for (Pixel& pixel : pixels)
        pixel = palette[random() % palette.size()];
    fill(sheet, sheet.Width(), sheet.Height(), pixels);
    sheet.Alpha(alphas == 0 ? AlphaNone : AlphaComplex);
}

void setRandomly(cPixSheet& sheet, std::mt19937& random) {
    sheet.PngPropertySet(pngInterlaced, random() % 2 == 0 ? 1 : 0);
    sheet.PngPropertySet(pngFilterMethod, static_cast<std::int32_t>(random() % 7));
    sheet.PngPropertySet(pngCompressionLevel, static_cast<std::int32_t>(random() % 10));
    const auto often = [&] { return random() % 3 == 0; };
    if (often()) sheet.PngPropertySet(pngBackgroundColor, static_cast<std::int32_t>(random() % 0x1000000));
    if (often()) sheet.PngPropertySet(pngPixelsPerMeterX, 2835);
    if (often()) sheet.PngPropertySet(pngLastModified, "1999-12-31 23:59:59");
    if (often())
        sheet.PngPropertySet(pngTitle, "Gr\xC3\xB6\xC3\x9F"
                                       "e\r\nin two lines");
    if (often()) sheet.PngPropertySet(pngText, "\xE5\x9B\xB3 and more", "Name of one's own");
    if (often()) sheet.PngPropertySet(pngComment, std::string(3000, '.'));
    if (often()) sheet.PngPropertySet(pngDescription, std::string(3000, '.') + "\xE5\x9B\xB3");
}

TEST(PngWriterOracle, LibpngReadsOtherPixelsOrPngcheckComplains) {
    const TemporaryFolder folder;
    std::mt19937 random(31);
    for (unsigned round = 0; round < 240; ++round) {
        SCOPED_TRACE(round);
        const std::string name =
            folder.name(u8"a" + std::u8string(1, static_cast<char8_t>('0' + round % 10)) + u8".png");
        cPixSheet sheet;
        ASSERT_TRUE(sheet.InitializeDIB(static_cast<std::int32_t>(1 + random() % (round % 24 == 0 ? 400 : 40)),
                                        static_cast<std::int32_t>(1 + random() % (round % 24 == 0 ? 400 : 40))));
        fillRandomly(sheet, random, round);
        setRandomly(sheet, random);
        ASSERT_TRUE(sheet.SaveToFile_PNG(name, false));

        png_image image{};
        image.version = PNG_IMAGE_VERSION;
        ASSERT_NE(png_image_begin_read_from_file(&image, name.c_str()), 0) << image.message;
        image.format = PNG_FORMAT_RGBA;
        std::vector<std::uint8_t> rgba(PNG_IMAGE_SIZE(image));
        ASSERT_NE(png_image_finish_read(&image, nullptr, rgba.data(), 0, nullptr), 0) << image.message;
        EXPECT_EQ(image.warning_or_error, 0U) << image.message;
        ByteArray straight;
        ASSERT_TRUE(sheet.GetDIBbits(straight, false, false, true, true, false, 0, 0, 0, 0, false));
        for (std::size_t i = 0; i < rgba.size(); i += 4) {
            if (rgba[i + 3] == 0) std::fill_n(&rgba[i], 3, std::uint8_t{0}); // the colour that stands for clear
        }
        ASSERT_TRUE(bytesOf(straight) == rgba);

        if (round % 10 != 9) continue;
        // Quiet when all is well; of zTXt and iTXt only the kind is said, and only when asked.
        const std::string check = "pngcheck -q '" + folder.name(u8"") + "'*.png >'" + folder.name(u8"said") + "' 2>&1";
        EXPECT_EQ(std::system(check.c_str()), 0);
        const auto said = readFile(folder.path(u8"said"));
        EXPECT_EQ(std::string(said.begin(), said.end()), "");
    }
}

} // namespace
