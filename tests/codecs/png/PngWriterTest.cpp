// The form that a picture is given, the pixels that come back, what properties put into the file.
#include "codecs/png/cPNGwriter.h"
#include "support/AllocationFault.h"
#include "support/PngLoading.h"
#include <functional>
#include <gtest/gtest.h>

namespace pixkit {
namespace {

using namespace test;

std::uint8_t byte(std::size_t value) {
    return static_cast<std::uint8_t>(value);
}

void make(cPixSheet& sheet, std::int32_t width, std::int32_t height, AlphaTypeEnum alpha,
          const std::function<Pixel(std::size_t, std::size_t)>& at) {
    std::vector<Pixel> pixels;
    for (std::int32_t y = 0; y < height; ++y)
        for (std::int32_t x = 0; x < width; ++x)
            pixels.push_back(at(static_cast<std::size_t>(x), static_cast<std::size_t>(y)));
    fill(sheet, width, height, pixels);
    sheet.Alpha(alpha);
}

Bytes saved(const cPixSheet& sheet) {
    ByteArray stream;
    EXPECT_TRUE(sheet.SaveToStream_PNG(stream));
    return bytesOf(stream);
}

// Data of the first chunk of a type; nothing when there is none.
std::optional<Bytes> chunk(const Bytes& file, const std::string& type) {
    for (std::size_t at = 8; at + 12 <= file.size();) {
        const std::size_t length = std::size_t{file[at]} << 24 | std::size_t{file[at + 1]} << 16 |
                                   std::size_t{file[at + 2]} << 8 | file[at + 3];
        const auto data = file.begin() + static_cast<std::ptrdiff_t>(at) + 8;
        if (std::equal(type.begin(), type.end(), data - 4))
            return Bytes(data, data + static_cast<std::ptrdiff_t>(length));
        at += length + 12;
    }
    return {};
}

// Straight by GetPixel's rule, and premultiplied again as the reader does: what a reload is expected to give.
Pixel reloaded(const Pixel& p) {
    if (p[3] == 0) return {0, 0, 0, 0};
    Pixel result = p;
    for (std::size_t c = 0; c < 3; ++c)
        result[c] = byte(p[c] * 255U / p[3] * p[3] / 255);
    return result;
}

struct Picture {
    const char* what;
    AlphaTypeEnum alpha;
    std::int32_t width, height;
    std::function<Pixel(std::size_t, std::size_t)> at;
    int colorType, bitDepth;
    std::size_t transparency; // bytes of tRNS
};

const std::vector<Picture>& pictures() {
    const auto gray = [](std::size_t v) { return Pixel{byte(v), byte(v), byte(v), 255}; };
    const auto clear = Pixel{0, 0, 0, 0};
    static const std::vector<Picture> all = {
        {"black", AlphaNone, 9, 5, [=](auto, auto) { return gray(0); }, 0, 1, 0},
        {"black and white", AlphaNone, 9, 5, [=](auto x, auto y) { return gray((x ^ y) % 2 * 255); }, 0, 1, 0},
        {"four grays", AlphaNone, 9, 5, [=](auto x, auto y) { return gray((x + y) % 4 * 85); }, 0, 2, 0},
        {"sixteen grays", AlphaNone, 17, 5, [=](auto x, auto y) { return gray((x + y) % 16 * 17); }, 0, 4, 0},
        {"all grays", AlphaNone, 16, 16, [=](auto x, auto y) { return gray(y * 16 + x); }, 0, 8, 0},
        {"grays of no depth", AlphaNone, 300, 300, [=](auto x, auto) { return gray(10 + x % 2); }, 3, 1, 0},
        {"clear throughout", AlphaSimple, 9, 5, [=](auto, auto) { return clear; }, 0, 1, 2},
        {"black, white and clear", AlphaSimple, 9, 5,
         [=](auto x, auto) { return x % 3 == 0 ? clear : gray(x % 3 * 255 / 2 == 127 ? 0 : 255); }, 0, 2, 2},
        {"all grays and clear", AlphaSimple, 64, 64,
         [=](auto x, auto y) { return x == 0 ? clear : gray((y * 64 + x) % 255); }, 0, 8, 2},
        {"two colours", AlphaNone, 200, 40,
         [](auto x, auto) {
             return Pixel{1, 2, byte(x % 2), 255};
         },
         3, 1, 0},
        {"three colours, one clear", AlphaSimple, 200, 40,
         [=](auto x, auto) {
             return x % 3 == 0 ? clear : Pixel{1, 2, byte(x % 3), 255};
         },
         3, 2, 1},
        {"sixteen translucent colours", AlphaComplex, 200, 40,
         [](auto x, auto) {
             return Pixel{byte(x % 16), 0, byte(x % 16), 200};
         },
         3, 4, 16},
        {"256 colours, half of them translucent", AlphaComplex, 256, 300,
         [](auto x, auto) {
             return Pixel{byte(x / 2), 0, 3, byte(x % 2 == 0 ? 255 : 128)};
         },
         3, 8, 128},
        {"many colours", AlphaNone, 300, 260,
         [](auto x, auto y) {
             return Pixel{byte(x), byte(y), 7, 255};
         },
         2, 8, 0},
        {"many colours and clear", AlphaSimple, 300, 260,
         [=](auto x, auto y) {
             return x < 9 ? clear : Pixel{byte(x), byte(y), 0, 255};
         },
         2, 8, 6},
        {"many colours, translucent", AlphaComplex, 300, 260,
         [](auto x, auto y) {
             return Pixel{byte(x % 100), byte(y % 100), 50, byte(100 + (x + y) % 156)};
         },
         6, 8, 0},
        {"grays, translucent", AlphaComplex, 300, 260,
         [](auto x, auto y) {
             const auto v = byte(x % 100);
             return Pixel{v, v, v, byte(100 + y % 156)};
         },
         4, 8, 0},
        {"one red pixel: a palette would be longer", AlphaNone, 1, 1,
         [](auto, auto) {
             return Pixel{0, 0, 255, 255};
         },
         2, 8, 0},
        {"alpha bytes that mean nothing", AlphaNone, 2, 1,
         [](auto x, auto) {
             return Pixel{255, 255, 255, byte(x)};
         },
         0, 1, 0},
    };
    return all;
}

TEST(PngWriter, PixelsComeBackOtherThanTheFormCanHold) {
    std::uint64_t checksum = 0xCBF29CE484222325U;
    for (const Picture& picture : pictures()) {
        SCOPED_TRACE(picture.what);
        cPixSheet sheet;
        make(sheet, picture.width, picture.height, picture.alpha, picture.at);
        std::vector<Pixel> expected = pixelsOf(sheet);
        for (Pixel& pixel : expected) {
            if (picture.alpha == AlphaNone) pixel[3] = 255;
            pixel = reloaded(pixel);
        }
        const Bytes plain = saved(sheet);
        const auto header = chunk(plain, "IHDR").value_or(Bytes(13));
        EXPECT_EQ(header[9], picture.colorType);
        EXPECT_EQ(header[8], picture.bitDepth);
        EXPECT_EQ(chunk(plain, "tRNS").value_or(Bytes()).size(), picture.transparency);
        for (int round = 0; round < 14; ++round) {
            sheet.PngPropertySet(pngInterlaced, round % 2);
            sheet.PngPropertySet(pngFilterMethod, round % 7);
            sheet.PngPropertySet(pngCompressionLevel, round % 10);
            const Bytes file = saved(sheet);
            const Loaded back = load(file, Source::stream, round % 2 == 0);
            EXPECT_EQ(back.width, picture.width);
            EXPECT_EQ(back.height, picture.height);
            ASSERT_TRUE(back.pixels == expected) << "round " << round;
            for (const std::uint8_t b : file)
                checksum = (checksum ^ b) * 0x100000001B3U;
        }
    }
    EXPECT_EQ(checksum, 0x95DFF4E1E74A991DU) << "other bytes than other builds write";
}

TEST(PngWriter, InterlacedPassesOfSmallPicturesAreLost) {
    for (std::int32_t width = 1; width <= 9; ++width) {
        for (std::int32_t height = 1; height <= 9; ++height) {
            cPixSheet sheet;
            make(sheet, width, height, AlphaNone, [](auto x, auto y) {
                return Pixel{byte(x * 20), byte(y * 30), 9, 255};
            });
            sheet.PngPropertySet(pngInterlaced, -1);
            ASSERT_EQ(load(saved(sheet)).pixels, pixelsOf(sheet)) << width << " x " << height;
        }
    }
}

// channel * 255 \ alpha loses what the division leaves over: then the channel comes back one lower. This pins how
// often.
TEST(PngWriter, AReloadIsOffByMoreThanTheRuleSays) {
    cPixSheet sheet;
    make(sheet, 256, 255, AlphaComplex, [](auto x, auto y) {
        return Pixel{byte(std::min(x, y + 1)), 0, 0, byte(y + 1)};
    });
    const std::vector<Pixel> before = pixelsOf(sheet), after = load(saved(sheet)).pixels;
    int same = 0, lower = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        if (i % 256 > i / 256 + 1) continue; // colour above alpha is none
        same += before[i] == after[i] ? 1 : 0;
        lower += before[i][0] == after[i][0] + 1 ? 1 : 0;
    }
    EXPECT_EQ(same, 1740);
    EXPECT_EQ(lower, 31155);
}

TEST(PngWriter, PropertiesAreTakenThatPngDoesNotAllowOrRefusedThatItDoes) {
    const std::string long79(79, 'k');
    struct Row {
        ePngProperties property;
        PngValue value;
        std::string keyword;
        bool isTaken;
    };
    const Row rows[] = {
        {pngTitle, "Größe 図", "", true},
        {pngTitle, "two\r\nlines\tand a tab", "ignored  keyword", true},
        {pngTitle, "\x01", "", false},
        {pngTitle, "\xC3", "", false},         // cut short
        {pngTitle, "\xED\xA0\x80", "", false}, // half a surrogate pair
        {pngTitle, "\xC0\x80", "", false},     // longer than need be
        {pngTitle, std::string("a\0b", 3), "", false},
        {pngTitle, 5, "", false},
        {pngText, "text", "", false},
        {pngText, "text", "k", true},
        {pngText, "text", long79, true},
        {pngText, "text", long79 + "k", false},
        {pngText, "text", " k", false},
        {pngText, "text", "k ", false},
        {pngText, "text", "two  spaces", false},
        {pngText, "text", "one space \xC3\xA9", true},
        {pngText, "text", "\xC2\xA0", false}, // a space that does not break
        {pngText, "text", "line\n", false},
        {pngText, "text", "\xE5\x9B\xB3", false}, // beyond Latin-1
        {pngBackgroundColor, 0xFFFFFF, "", true},
        {pngBackgroundColor, 0x1000000, "", false},
        {pngBackgroundColor, -1, "", false},
        {pngBackgroundColor, "red", "", false},
        {pngPixelsPerMeterX, 0, "", false},
        {pngPixelsPerMeterY, 2835, "", true},
        {pngLastModified, "2024-02-29 12:34:56", "", true},
        {pngLastModified, "2024-02-29T12:34:56Z", "", true},
        {pngLastModified, "2023-02-29", "", false},
        {pngLastModified, "2024-02-29 24:00:00", "", false},
        {pngLastModified, "yesterday", "", false},
        {pngLastModified, 45351.5, "", true},
        {pngLastModified, 1e9, "", false},
        {pngCompressionLevel, 10, "", false},
        {pngCompressionLevel, 0, "", true},
        {pngFilterMethod, filterAdaptive, "", true},
        {pngFilterMethod, 7, "", false},
        {pngInterlaced, -1, "", true},
        {static_cast<ePngProperties>(0), 1, "", false},
        {static_cast<ePngProperties>(19), PngValue(), "", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::to_string(row.property) + " " + row.keyword + ", row " + std::to_string(&row - rows));
        cPixSheet sheet;
        const PngValue before = sheet.PngPropertyGet(row.property, row.keyword);
        EXPECT_EQ(sheet.PngPropertySet(row.property, row.value, row.keyword), row.isTaken);
        const PngValue after = sheet.PngPropertyGet(row.property, row.keyword);
        if (!row.isTaken) {
            EXPECT_EQ(after, before);
        } else if (row.property != pngLastModified) {
            EXPECT_EQ(after, row.value);
        } else {
            EXPECT_NEAR(std::get<double>(after), 45351.5, 0.5);
        }
        if (!row.isTaken) continue;
        EXPECT_TRUE(sheet.PngPropertySet(row.property, PngValue(), row.keyword));
        EXPECT_EQ(sheet.PngPropertyGet(row.property, row.keyword), before);
    }
}

Bytes bytes(const std::string& text) {
    return {text.begin(), text.end()};
}

TEST(PngWriter, WhatPropertiesSayIsMissingOrInTheWrongChunk) {
    cPixSheet sheet;
    make(sheet, 300, 260, AlphaNone, [](auto x, auto) { return Pixel{byte(x), 1, 2, 255}; });
    sheet.PngPropertySet(pngTitle, "caf\xC3\xA9\r\nligne");
    sheet.PngPropertySet(pngText, "\xE5\x9B\xB3", "Other");
    sheet.PngPropertySet(pngComment, std::string(2000, 'x'));
    sheet.PngPropertySet(pngPixelsPerMeterY, 2835);
    sheet.PngPropertySet(pngLastModified, "2024-02-29 12:34:56");
    sheet.PngPropertySet(pngBackgroundColor, 0x030201);
    sheet.LoadPicture_Stream(ByteArray(saved(sheet))); // properties survive
    const Bytes file = saved(sheet);
    EXPECT_EQ(chunk(file, "tEXt"), bytes(std::string("Title\0caf\xE9\nligne", 16)));
    EXPECT_EQ(chunk(file, "iTXt"), bytes(std::string("Other\0\0\0\0\0\xE5\x9B\xB3", 13)));
    ASSERT_TRUE(chunk(file, "zTXt"));
    EXPECT_LT(chunk(file, "zTXt")->size(), 100U);
    EXPECT_EQ(chunk(file, "pHYs"), (Bytes{0, 0, 0x0B, 0x13, 0, 0, 0x0B, 0x13, 1}));
    EXPECT_EQ(chunk(file, "tIME"), (Bytes{0x07, 0xE8, 2, 29, 12, 34, 56}));
    EXPECT_EQ(chunk(file, "bKGD"), (Bytes{0, 1, 0, 2, 0, 3})) << "R, G, B: there are 257 colours with it";
    EXPECT_DOUBLE_EQ(std::get<double>(sheet.PngPropertyGet(pngLastModified)), 45351 + 45296 / 86400.0);

    make(sheet, 300, 260, AlphaNone, [](auto x, auto) { return Pixel{byte(x % 2), 1, 2, 255}; });
    EXPECT_EQ(chunk(saved(sheet), "PLTE")->size(), 9U) << "the background is one of three colours";
    EXPECT_EQ(chunk(saved(sheet), "bKGD")->size(), 1U);
    make(sheet, 2, 2, AlphaNone, [](auto x, auto) { return Pixel{byte(x * 255), byte(x * 255), byte(x * 255), 255}; });
    sheet.PngPropertySet(pngBackgroundColor, 0x555555);
    EXPECT_EQ(chunk(saved(sheet), "IHDR").value_or(Bytes(13))[8], 2);
    EXPECT_EQ(chunk(saved(sheet), "bKGD"), (Bytes{0, 1}));
}

TEST(PngWriter, AFailedSaveSaysTrueOrSpoilsWhatWasThere) {
    const TemporaryFolder folder;
    const std::string name = folder.name(u8"größe.png");
    cPixSheet sheet;
    ByteArray kept(Bytes{1, 2, 3});
    EXPECT_FALSE(sheet.SaveToStream_PNG(kept));
    EXPECT_FALSE(sheet.SaveToFile_PNG(name, false));
    EXPECT_EQ(bytesOf(kept), (Bytes{1, 2, 3}));
    make(sheet, 300, 260, AlphaSimple, [](auto x, auto y) {
        return Pixel{byte(x), byte(y), 0, byte(x < 9 ? 0 : 255)};
    });
    sheet.PngPropertySet(pngTitle, std::string(2000, 'x'));
    writeFile(folder.path(u8"größe.png"), {1});
    for (const auto call : {platform::SeamCall::createFile, platform::SeamCall::writeFile}) {
        const platform::ScopedFault fault(call, call == platform::SeamCall::createFile ? 1 : 0, 1);
        EXPECT_FALSE(sheet.SaveToFile_PNG(name, false));
        EXPECT_EQ(readFile(folder.path(u8"größe.png")), Bytes{1});
    }
    int failures = 0;
    setErrorReportHandler([&](const ErrorReport&) { ++failures; });
    for (long after = 0;; ++after) {
        ASSERT_LT(after, 200);
        bool isSaved = false;
        {
            const AllocationFault fault(after);
            isSaved = sheet.SaveToStream_PNG(kept);
        }
        if (isSaved) break;
        EXPECT_EQ(bytesOf(kept), (Bytes{1, 2, 3}));
        EXPECT_EQ(failures, after + 1);
    }
    setErrorReportHandler({});
    EXPECT_GT(failures, 5);
    ASSERT_TRUE(sheet.SaveToFile_PNG(name, false));
    EXPECT_EQ(readFile(folder.path(u8"größe.png")), bytesOf(kept));
}

} // namespace
} // namespace pixkit
