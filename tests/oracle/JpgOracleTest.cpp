// libjpeg reads our JPEG files without a warning, and finds in them what it finds in its own.
#include "oracle/libjpegVerdict.h"
#include "support/Pictures.h"
#include <algorithm>
#include <cmath>

using namespace pixkit;
using namespace pixkit::test;

namespace {

void draw(cPixSheet& sheet, std::int32_t width, std::int32_t height, bool isGray) {
    std::mt19937 random(7);
    std::vector<Pixel> pixels;
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            const auto wave = [&](double phase) {
                const double value = 128 + 90 * std::sin(x * 0.11 + phase) * std::cos(y * 0.07 + phase);
                return static_cast<std::uint8_t>(value + static_cast<double>(random() % 13));
            };
            const std::uint8_t first = wave(0);
            pixels.push_back({first, isGray ? first : wave(1), isGray ? first : wave(2), 255});
        }
    }
    fill(sheet, width, height, pixels);
}

double psnr(const std::vector<Pixel>& pixels, const JpegPicture& decoded) {
    double squares = 0;
    for (std::size_t i = 0; i < decoded.bgra.size(); ++i)
        squares += std::pow(decoded.bgra[i] - pixels[i / 4][i % 4], 2);
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(pixels.size()) * 3 / (squares + 1e-9));
}

struct Case {
    std::int32_t width, height, quality;
    bool isGray;
};

void compare(const Case& test, double tolerance) {
    SCOPED_TRACE(testing::Message() << test.width << " x " << test.height << ", quality " << test.quality
                                    << (test.isGray ? ", gray" : ""));
    cPixSheet sheet;
    draw(sheet, test.width, test.height, test.isGray);
    ByteArray ours;
    ASSERT_TRUE(sheet.SaveToStream_JPG(ours, test.quality));
    const auto theirs = encodeJpeg(sheet.BitsPointer(), static_cast<std::uint32_t>(test.width),
                                   static_cast<std::uint32_t>(test.height), test.quality, test.isGray);
    const JpegPicture fromOurs = decodeJpeg(ours.data(), ours.size());
    const JpegPicture fromTheirs = decodeJpeg(theirs.data(), theirs.size());
    ASSERT_EQ(fromOurs.warnings, 0);
    ASSERT_EQ(fromOurs.width, fromTheirs.width);
    ASSERT_EQ(fromOurs.height, fromTheirs.height);
    EXPECT_EQ(fromOurs.components, fromTheirs.components);
    EXPECT_LE(static_cast<double>(ours.size()), 1.03 * static_cast<double>(theirs.size()));
    const auto pixels = pixelsOf(sheet);
    EXPECT_GE(psnr(pixels, fromOurs), std::min(psnr(pixels, fromTheirs), 50.0) - tolerance);
}

} // namespace

TEST(JpgOracle, LibjpegFindsAWorsePictureThanInItsOwnFile) {
    for (std::int32_t quality = 1; quality <= 100; ++quality)
        for (const bool isGray : {false, true})
            compare({150, 75, quality, isGray}, 0.1);
}

TEST(JpgOracle, AnEdgeIsPaddedWrongly) {
    // In so few pixels one rounding makes decibels; wrong padding makes many.
    for (std::int32_t width = 1; width <= 17; ++width) {
        for (std::int32_t height = 1; height <= 17; ++height) {
            compare({width, height, 80, false}, 4);
            compare({width, height, 92, (width + height) % 2 == 0}, 4);
        }
    }
}

TEST(JpgOracle, NoiseOrExtremesBreakTheCode) {
    std::mt19937 random(3);
    for (const std::int32_t quality : {1, 50, 89, 90, 100}) {
        for (const unsigned values : {2U, 3U, 256U}) {
            cPixSheet sheet;
            ASSERT_TRUE(sheet.InitializeDIB(403, 211));
            for (std::int32_t i = 0; i < sheet.scanWidth() * sheet.Height(); ++i)
                sheet.BitsPointer()[i] =
                    i % 4 == 3 ? std::uint8_t{255} : static_cast<std::uint8_t>(random() % values * 255 / (values - 1));
            ByteArray stream;
            ASSERT_TRUE(sheet.SaveToStream_JPG(stream, quality));
            const JpegPicture decoded = decodeJpeg(stream.data(), stream.size());
            EXPECT_EQ(decoded.warnings, 0) << quality << ' ' << values;
            if (quality != 100) continue;
            EXPECT_GT(psnr(pixelsOf(sheet), decoded), 44) << values;
        }
    }
}
