// Small pictures of every form in every format with every option: size and checksum of the bytes stand in
// tests/data/written.txt, the same in every build. Whether others read the right pixels in them is tests/oracle's
// question.
#include "support/Ledger.h"
#include "surface/HostAccess.h"
#include <functional>

using namespace pixkit;
using namespace pixkit::test;

namespace {

struct Picture {
    const char* name;
    std::int32_t width, height;
    AlphaTypeEnum alpha;
    Pixel (*at)(unsigned x, unsigned y);
};

Pixel of(unsigned r, unsigned g, unsigned b, unsigned alpha = 255) {
    const auto channel = [alpha](unsigned value) { return static_cast<std::uint8_t>(value % 256 * alpha / 255); };
    return {channel(b), channel(g), channel(r), static_cast<std::uint8_t>(alpha)};
}
Pixel gray(unsigned value, unsigned alpha = 255) {
    return of(value, value, value, alpha);
}
Pixel orHole(unsigned x, unsigned y, const Pixel& pixel) {
    return (x * x + y * y) % 31 < 9 ? Pixel{} : pixel;
}
unsigned random(unsigned x, unsigned y) {
    static const Samples samples = noise(5);
    return samples(x, y, 0);
}

constexpr Picture pictures[] = {
    {"red-dot", 1, 1, AlphaNone, [](auto, auto) { return of(255, 0, 0); }},
    {"clear", 9, 5, AlphaSimple, [](auto, auto) { return Pixel{}; }},
    {"black-and-white", 9, 5, AlphaNone, [](auto x, auto y) { return gray((x ^ y) % 2 * 255); }},
    {"4-grays", 10, 5, AlphaNone, [](auto x, auto y) { return gray((x + y) % 4 * 85); }},
    {"16-grays", 17, 6, AlphaNone, [](auto x, auto y) { return gray((x + y) % 16 * 17); }},
    {"grays", 16, 16, AlphaNone, [](auto x, auto y) { return gray(y * 16 + x); }},
    {"grays-with-hole", 30, 9, AlphaSimple, [](auto x, auto y) { return orHole(x, y, gray(x * 8)); }},
    {"translucent-grays", 50, 60, AlphaComplex, [](auto x, auto y) { return gray(x * 5, y * 4); }},
    {"2-colors", 131, 7, AlphaNone, [](auto x, auto) { return x < 130 ? of(200, 3, 7) : of(9, 200, 90); }},
    {"3-colors-with-hole", 40, 20, AlphaSimple, [](auto x, auto y) { return orHole(x, y, of(y / 7 * 100, 4, 90)); }},
    {"16-translucent-colors", 64, 16, AlphaComplex,
     [](auto x, auto y) { return of(x / 4 * 16, 90, x / 4 * 3, 10 + random(x / 4, y / 16) % 240); }},
    {"256-colors", 64, 20, AlphaNone, [](auto x, auto y) { return of(x * 4, y / 5 * 80, 7); }},
    {"257-colors", 257, 3, AlphaNone, [](auto x, auto) { return of(x, x / 256, 9); }},
    {"photo", 61, 47, AlphaNone, [](auto x, auto y) { return of(x * 4, y * 5, (x + y) * 2 + random(x, y) % 16); }},
    {"keyed-photo", 40, 33, AlphaSimple, [](auto x, auto y) { return orHole(x, y, of(x * 6, y * 7, random(x, y))); }},
    {"glass", 48, 48, AlphaComplex,
     [](auto x, auto y) { return of(x * 5, y * 5, random(x, y), (x * x + y * y) / 18 % 256); }},
    {"large", 300, 230, AlphaComplex,
     [](auto x, auto y) { return of(x, y + random(x / 9, y) % 30, x * y / 99, x < 40 ? x * 6 : 255); }},
    {"alpha-unused", 13, 11, AlphaNone,
     [](auto x, auto y) {
         return Pixel{gray(x * y)[0], 9, 9, 0};
     }},
    {"alpha-unsaid", 13, 11, AlphaNone, [](auto x, auto y) { return of(x * 20, y * 20, 3, 40 + x * 16); }},
    {"cursor", 21, 32, AlphaComplex, [](auto x, auto y) { return of(x * 12, 20, y * 8, x > y ? 0 : 100 + y * 5); }},
    {"256-colors-and-hole", 17, 16, AlphaSimple,
     [](auto x, auto y) { return x < 16 ? of(x * 16, y * 16, 7) : Pixel{}; }},
    // The last colour too many goes where that costs as much in one place as in another.
    {"2-equal-cuts", 257, 1, AlphaNone,
     [](auto x, auto) {
         if (x >= 255) return of(x == 255 ? 4 : 40, 0, 0);
         return of(x % 8 * 32 + (x == 1 ? 4 : 0), x / 8 % 8 * 32, x / 64 * 64);
     }},
};

void draw(cPixSheet& sheet, const Picture& picture) {
    test::draw(sheet, picture.width, picture.height, picture.alpha, picture.at);
    if (picture.name != std::string("cursor")) return;
    HostAccess::ImageType(sheet, imgCursorARGB);
    HostAccess::hotspot(sheet, {20, 9});
}

using Ledger = std::function<void(const std::string& options, bool isSaved, const ByteArray& stream)>;

void writeFlat(const cPixSheet& sheet, const Ledger& add) {
    ByteArray bytes;
    for (const bool keep : {true, false})
        for (const std::int32_t fill : {0, 0x80FF10})
            add(std::string("bmp") + (keep ? " keep" : "") + (fill != 0 ? " on color" : ""),
                sheet.SaveToStream_Bitmap(bytes, keep, fill), bytes);
    for (const std::int32_t quality : {-5, 1, 30, 70, 89, 90, 100, 1000})
        add("jpg " + std::to_string(quality), sheet.SaveToStream_JPG(bytes, quality), bytes);
    for (const bool isAdaptive : {true, false})
        for (const int tolerance : {1, 128, 255})
            add((isAdaptive ? "gif " : "gif web-safe ") + std::to_string(tolerance),
                sheet.SaveToStream_GIF(bytes, isAdaptive, static_cast<std::uint8_t>(tolerance)), bytes);
    for (unsigned flags = 0; flags < 8; ++flags) {
        const bool isCoded = (flags & 1) != 0, isReduced = (flags & 2) != 0, asStored = (flags & 4) != 0;
        const bool isSaved = sheet.SaveToStream_TGA(bytes, isCoded, isReduced, asStored);
        // The time in the extension area, which stands before the footer.
        if (asStored && sheet.Alpha() != AlphaNone)
            std::fill_n(bytes.data() + bytes.size() - 26 - 495 + 367, 12, std::uint8_t{0});
        add(std::string("tga") + (isCoded ? " rle" : "") + (isReduced ? " palette" : "") +
                (asStored ? " premultiplied" : ""),
            isSaved, bytes);
    }
}

void writeIcons(const cPixSheet& sheet, const Ledger& add) {
    ByteArray bytes;
    for (const std::int32_t depth : {1, 4, 8, 24, 32})
        for (const auto& [width, height] : {std::pair(0, 0), {16, 16}, {31, 48}, {256, 40}}) {
            const IconEntrySize entry[] = {{width, height, depth}};
            add("ico " + std::to_string(width) + "x" + std::to_string(height) + " at " + std::to_string(depth),
                sheet.SaveToStream_ICO(bytes, {}, entry) == 1, bytes);
        }
    cPixSheet other;
    draw(other, pictures[13]);
    const cPixSheet* const both[] = {&other, &sheet};
    const IconEntrySize several[] = {{48, 48, TRUE_COLOR_ALPHA}, {16, 16, 4}, {24, 0, HIGH_COLOR}, {300, 280, 32}};
    add("ico of two", sheet.SaveToStream_ICO(bytes, both) == 2, bytes);
    add("ico of two, four sizes", sheet.SaveToStream_ICO(bytes, both, several) == 4, bytes);
}

void writePNG(const Picture& picture, const Ledger& add) {
    struct Setting {
        ePngProperties property;
        PngValue value;
        const char* keyword = "";
    };
    const auto row = [&](const std::string& options, const std::vector<Setting>& settings) {
        cPixSheet sheet;
        draw(sheet, picture);
        for (const Setting& setting : settings)
            EXPECT_TRUE(sheet.PngPropertySet(setting.property, setting.value, setting.keyword)) << options;
        ByteArray bytes;
        add(options, sheet.SaveToStream_PNG(bytes), bytes);
    };
    row("png", {});
    for (const int level : {0, 1, 9})
        row("png level " + std::to_string(level), {{pngCompressionLevel, level}});
    for (int filter = filterNone; filter <= filterAdaptive; ++filter) {
        row("png filter " + std::to_string(filter), {{pngFilterMethod, filter}});
        row("png interlaced, filter " + std::to_string(filter), {{pngInterlaced, 1}, {pngFilterMethod, filter}});
    }
    row("png interlaced", {{pngInterlaced, -1}});
    row("png background", {{pngBackgroundColor, 0x2010F0}});
    const std::string longText(3000, 'n');
    row("png texts, density, time", {{pngTitle, "Gr\u00FC\u00DFe"},
                                     {pngText, "\u65E5\u672C", "Place"},
                                     {pngComment, longText},
                                     {pngDescription, longText + "\u65E5"},
                                     {pngPixelsPerMeterX, 2835},
                                     {pngLastModified, "2024-02-29 12:34:56"}});
    row("png text with lines", {{pngComment, "a\r\nb\rc\nd\r\n"}});
}

} // namespace

TEST(WrittenLedger, AFileHasOtherBytesThanAreWrittenDown) {
    std::ostringstream lines;
    for (const Picture& picture : pictures) {
        const Ledger add = [&](const std::string& options, bool isSaved, const ByteArray& stream) {
            EXPECT_TRUE(isSaved) << picture.name << ", " << options;
            lines << picture.name << ", " << options << ": " << stream.size() << " " << checksum(stream.bytes())
                  << '\n';
        };
        cPixSheet sheet;
        draw(sheet, picture);
        writeFlat(sheet, add);
        writeIcons(sheet, add);
        writePNG(picture, add);
    }
    compareWithLedger("written.txt", lines.str());
}
// SPDX-License-Identifier: MIT
