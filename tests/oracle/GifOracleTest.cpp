// giflib and ImageMagick read our GIF files, with the pixels that were saved or with near ones.
#include "oracle/giflibVerdict.h"
#include "support/Pictures.h"
#include <cmath>
#include <functional>

using namespace pixkit;
using namespace pixkit::test;

namespace {

using Draw = std::function<Pixel(std::int32_t x, std::int32_t y)>;

void draw(cPixSheet& sheet, std::int32_t width, std::int32_t height, AlphaTypeEnum alpha, const Draw& pixel) {
    std::vector<Pixel> pixels;
    for (std::int32_t y = 0; y < height; ++y)
        for (std::int32_t x = 0; x < width; ++x)
            pixels.push_back(pixel(x, y));
    fill(sheet, width, height, pixels);
    sheet.Alpha(alpha);
}

// `colors` different ones.
Pixel numbered(unsigned number, unsigned colors) {
    number %= colors;
    return {static_cast<std::uint8_t>(number * 37), static_cast<std::uint8_t>(number),
            static_cast<std::uint8_t>(number / 3), 255};
}

GifDecoded saved(const cPixSheet& sheet, bool isAdaptive = true, std::uint8_t tolerance = 128) {
    ByteArray stream;
    EXPECT_TRUE(sheet.SaveToStream_GIF(stream, isAdaptive, tolerance));
    GifDecoded decoded = decodeGif(stream.data(), stream.size());
    EXPECT_TRUE(decoded.isWhole);
    EXPECT_EQ(decoded.pictures, 1);
    EXPECT_EQ(decoded.width, sheet.Width());
    EXPECT_EQ(decoded.height, sheet.Height());
    return decoded;
}

double psnr(const std::vector<Pixel>& a, const std::vector<Pixel>& b) {
    double squares = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        for (std::size_t channel = 0; channel < 3; ++channel)
            squares += std::pow(a[i][channel] - b[i][channel], 2);
    return 10 * std::log10(255.0 * 255.0 * 3 * static_cast<double>(a.size()) / squares);
}

Pixel photographic(std::int32_t x, std::int32_t y) {
    const auto wave = [&](double phase) {
        const double value = 120 + 70 * std::sin(x * 0.013 + phase) + 50 * std::cos(y * 0.017 - phase * x * 0.004);
        return static_cast<std::uint8_t>(value + (x * 7 + y * 13) % 11);
    };
    return {wave(0), wave(1), wave(2), 255};
}

} // namespace

TEST(GifOracle, PicturesOfFewColoursAreReadWithOtherPixels) {
    std::mt19937 random(5);
    std::vector<unsigned> noise(700 * 300);
    for (unsigned& number : noise)
        number = static_cast<unsigned>(random());
    const auto at = [&](std::int32_t x, std::int32_t y) { return noise[static_cast<std::size_t>(y * 700 + x)]; };
    for (const unsigned colors : {1U, 2U, 3U, 4U, 5U, 16U, 17U, 128U, 129U, 255U}) {
        const struct {
            const char* fault;
            Draw pixel;
        } rows[] = {
            {"noise fills the dictionary soon", [&](auto x, auto y) { return numbered(at(x, y), colors); }},
            {"flat", [&](auto, auto) { return numbered(1, colors); }},
            {"stripes, for which a full dictionary goes on to serve",
             [&](auto x, auto y) { return numbered(static_cast<unsigned>(x % 97 + y % 3), colors); }},
            {"stripes, then noise, then stripes",
             [&](auto x, auto y) {
                 return numbered(y / 40 % 2 == 0 ? static_cast<unsigned>(x % 89) : at(x, y), colors);
             }},
            {"holes", [&](auto x, auto y) { return (x / 5 + y / 3) % 2 == 0 ? Pixel{} : numbered(at(x, y), colors); }},
        };
        for (const auto& row : rows) {
            SCOPED_TRACE(testing::Message() << row.fault << ", " << colors);
            cPixSheet sheet;
            draw(sheet, 700, 300, AlphaSimple, row.pixel);
            EXPECT_EQ(saved(sheet).pixels, pixelsOf(sheet));
        }
    }
    for (std::int32_t width = 1; width <= 17; ++width) {
        for (std::int32_t height = 1; height <= 17; ++height) {
            cPixSheet sheet;
            draw(sheet, width, height, AlphaNone,
                 [&](auto x, auto y) { return numbered(at(x * 3 + height, y), 1 + at(width, height) % 60); });
            EXPECT_EQ(saved(sheet).pixels, pixelsOf(sheet)) << width << " x " << height;
        }
    }
}

TEST(GifOracle, AlphaIsJudgedOrTakenOutOfColoursWrongly) {
    const struct {
        Pixel stored;
        std::uint8_t tolerance;
        Pixel expected;
    } rows[] = {
        {{64, 32, 16, 128}, 128, {127, 63, 31, 255}},
        {{64, 32, 16, 127}, 128, {}},
        {{64, 32, 16, 1}, 0, {192, 224, 240, 255}}, // colour above alpha: 16,320, 8,160 and 4,080, their low bytes
        {{0, 0, 0, 0}, 0, {0, 0, 0, 255}},
        {{9, 8, 7, 255}, 255, {9, 8, 7, 255}},
        {{9, 8, 7, 254}, 255, {}},
    };
    for (const auto& row : rows) {
        cPixSheet sheet;
        fill(sheet, 1, 1, {row.stored});
        sheet.Alpha(AlphaComplex);
        EXPECT_EQ(saved(sheet, true, row.tolerance).pixels, std::vector{row.expected}) << +row.stored[3];
        sheet.Alpha(AlphaNone); // then alpha is not looked at
        const Pixel opaque{row.stored[0], row.stored[1], row.stored[2], 255};
        EXPECT_EQ(saved(sheet, true, row.tolerance).pixels, std::vector{opaque}) << +row.stored[3];
    }
}

TEST(GifOracle, AnAdaptivePaletteIsFarFromThePicture) {
    cPixSheet photo, holes, ramp, few;
    draw(photo, 640, 480, AlphaNone, photographic);
    draw(holes, 640, 480, AlphaSimple, [](auto x, auto y) { return x % 20 < 3 ? Pixel{} : photographic(x, y); });
    draw(ramp, 256, 256, AlphaNone, [](auto x, auto y) {
        return Pixel{static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(x), static_cast<std::uint8_t>((x + y) / 8),
                     255};
    });
    // 300 colours next to each other: nearly every one can have an entry of its own.
    draw(few, 300, 20, AlphaNone, [](auto x, auto) {
        return Pixel{static_cast<std::uint8_t>(x % 20), static_cast<std::uint8_t>(x / 20), 0, 255};
    });
    const struct {
        const char* picture;
        const cPixSheet& sheet;
        double decibels;
    } rows[] = {{"photo", photo, 31}, {"holes", holes, 31}, {"ramp", ramp, 40}, {"few", few, 55}};
    for (const auto& row : rows) {
        const auto wanted = pixelsOf(row.sheet);
        const auto got = saved(row.sheet).pixels;
        EXPECT_GE(psnr(wanted, got), row.decibels) << row.picture;
        for (std::size_t i = 0; i < wanted.size(); ++i)
            ASSERT_EQ(got[i][3], wanted[i][3]) << row.picture;
    }
}

TEST(GifOracle, WebSafeColoursAreWrongOrDrift) {
    cPixSheet gray, exact;
    draw(gray, 64, 64, AlphaSimple, [](auto x, auto) { return x < 8 ? Pixel{} : Pixel{70, 100, 200, 255}; });
    std::array<double, 3> sums{};
    const auto pixels = saved(gray, false).pixels;
    for (const Pixel& pixel : pixels) {
        for (std::size_t i = 0; i < 3; ++i) {
            EXPECT_EQ(pixel[i] % 51, 0);
            sums[i] += pixel[i];
        }
    }
    EXPECT_EQ(pixels[7], Pixel{});
    EXPECT_EQ(pixels[8][3], 255);
    EXPECT_NEAR(sums[0] / (56 * 64), 70, 1);
    EXPECT_NEAR(sums[1] / (56 * 64), 100, 1);
    EXPECT_NEAR(sums[2] / (56 * 64), 200, 1);
    draw(exact, 36, 6, AlphaNone, [](auto x, auto y) {
        const auto level = [](std::int32_t n) { return static_cast<std::uint8_t>(n * 51); };
        return Pixel{level(x % 6), level(x / 6), level(y), 255};
    });
    EXPECT_EQ(saved(exact, false).pixels, pixelsOf(exact)) << "what is web-safe needs no dither";
}

// The same picture, so the same palette up to its order: the codes alone differ.
TEST(GifOracle, ImageMagickReadsOtherPixelsOrWritesSmallerFiles) {
    const TemporaryFolder folder;
    cPixSheet sheet;
    draw(sheet, 500, 400, AlphaNone, [](auto x, auto y) {
        const Pixel photo = photographic(x, y);
        return Pixel{static_cast<std::uint8_t>(photo[0] & 0xE0), static_cast<std::uint8_t>(photo[1] & 0xC0),
                     static_cast<std::uint8_t>(photo[2] & 0xE0), 255};
    });
    ASSERT_TRUE(sheet.SaveToFile_GIF(folder.name(u8"ours.gif")));
    std::system(("cd '" + folder.path(u8"").string() +
                 "' && convert-im6.q16 ours.gif +dither theirs.gif && convert-im6.q16 ours.gif -depth 8 rgba:ours.rgba")
                    .c_str());
    const auto theirs = readFile(folder.path(u8"theirs.gif"));
    const auto pixels = readFile(folder.path(u8"ours.rgba"));
    ASSERT_FALSE(theirs.empty());
    EXPECT_LE(readFile(folder.path(u8"ours.gif")).size(), theirs.size());
    const auto wanted = pixelsOf(sheet);
    ASSERT_EQ(pixels.size(), wanted.size() * 4);
    for (std::size_t i = 0; i < pixels.size(); i += 4)
        ASSERT_EQ((Pixel{pixels[i + 2], pixels[i + 1], pixels[i], pixels[i + 3]}), wanted[i / 4]) << i / 4;
}
