// How near written GIF and JPEG files are to their pictures, as giflib and libjpeg read them.
#include "oracle/Readers.h"
#include "oracle/libjpegVerdict.h"
#include <cmath>

using namespace pixkit;
using namespace pixkit::test;

namespace {

// Decibels, over the colours.
double psnr(const std::vector<Pixel>& a, const std::vector<Pixel>& b) {
    double squares = 1e-9;
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t channel = 0; channel < 3; ++channel)
            squares += std::pow(a[i][channel] - b[i][channel], 2);
    return 10 * std::log10(255.0 * 255.0 * 3 * static_cast<double>(a.size()) / squares);
}

Pixel photographic(unsigned x, unsigned y) {
    const auto wave = [&](double phase) {
        const double value = 120 + 70 * std::sin(x * 0.013 + phase) + 50 * std::cos(y * 0.017 - phase * x * 0.004);
        return static_cast<std::uint8_t>(value + (x * 7 + y * 13) % 11);
    };
    return {wave(0), wave(1), wave(2), 255};
}

std::vector<Pixel> asGif(const cPixSheet& sheet) {
    ByteArray file;
    EXPECT_TRUE(sheet.SaveToStream_GIF(file));
    return withGiflib(bytesOf(file)).value_or(Straight()).pixels;
}

} // namespace

TEST(LossyOracle, AnAdaptivePaletteIsFarFromThePicture) {
    const struct {
        const char* picture;
        std::int32_t width, height;
        Pixel (*at)(unsigned x, unsigned y);
        double decibels;
    } rows[] = {{"photo", 640, 480, photographic, 31},
                {"holes", 640, 480, [](auto x, auto y) { return x % 20 < 3 ? Pixel{} : photographic(x, y); }, 31},
                {"ramp", 256, 256,
                 [](auto x, auto y) {
                     const auto value = static_cast<std::uint8_t>(x);
                     return Pixel{value, value, static_cast<std::uint8_t>((x + y) / 8), 255};
                 },
                 40},
                // 300 colours next to each other: nearly every one can have an entry of its own.
                {"few", 300, 20,
                 [](auto x, auto) {
                     return Pixel{static_cast<std::uint8_t>(x % 20), static_cast<std::uint8_t>(x / 20), 0, 255};
                 },
                 55}};
    for (const auto& row : rows) {
        cPixSheet sheet;
        draw(sheet, row.width, row.height, AlphaSimple, row.at);
        const auto wanted = pixelsOf(sheet), found = asGif(sheet);
        ASSERT_EQ(found.size(), wanted.size());
        EXPECT_GE(psnr(wanted, found), row.decibels) << row.picture;
        const auto isClear = [](const Pixel& pixel) { return pixel[3] == 0; };
        EXPECT_TRUE(std::ranges::equal(found, wanted, {}, isClear, isClear)) << row.picture;
    }
}

// At every quality, in pictures of every size around a block's; against what libjpeg finds in its own file.
TEST(LossyOracle, LibjpegFindsAWorsePictureThanInItsOwnFile) {
    const Samples random = noise(7);
    const auto compare = [&](std::int32_t width, std::int32_t height, std::int32_t quality, bool isGray,
                             double tolerance) {
        SCOPED_TRACE(testing::Message() << width << " x " << height << ", quality " << quality << ", gray " << isGray);
        cPixSheet sheet;
        draw(sheet, width, height, AlphaNone, [&](unsigned x, unsigned y) {
            const auto wave = [&](std::size_t channel) {
                const double phase = isGray ? 0 : static_cast<double>(channel);
                const double value = 128 + 90 * std::sin(x * 0.11 + phase) * std::cos(y * 0.07 + phase);
                return static_cast<std::uint8_t>(value + random(x, y, isGray ? 0 : channel) % 13);
            };
            return Pixel{wave(0), wave(1), wave(2), 255};
        });
        ByteArray ours;
        ASSERT_TRUE(sheet.SaveToStream_JPG(ours, quality));
        const auto theirs = encodeJpeg(sheet.BitsPointer(), static_cast<std::uint32_t>(width),
                                       static_cast<std::uint32_t>(height), quality, isGray);
        const JpegPicture fromOurs = decodeJpeg(ours.data(), ours.size());
        const JpegPicture fromTheirs = decodeJpeg(theirs.data(), theirs.size());
        ASSERT_TRUE(fromOurs.warnings == 0 && fromOurs.pixels.size() == fromTheirs.pixels.size());
        EXPECT_EQ(fromOurs.components, fromTheirs.components);
        EXPECT_LE(static_cast<double>(ours.size()), 1.03 * static_cast<double>(theirs.size()));
        const auto pixels = pixelsOf(sheet);
        EXPECT_GE(psnr(pixels, fromOurs.pixels), std::min(psnr(pixels, fromTheirs.pixels), 50.0) - tolerance);
    };
    for (std::int32_t quality = 1; quality <= 100; ++quality)
        compare(150, 75, quality, quality % 2 == 0, 0.1);
    // In so few pixels one rounding makes decibels; wrong padding makes many.
    for (std::int32_t i = 0; i < 17 * 17; ++i)
        compare(1 + i % 17, 1 + i / 17, i % 2 == 0 ? 80 : 92, i % 5 == 0, 4);
}
// SPDX-License-Identifier: MIT
