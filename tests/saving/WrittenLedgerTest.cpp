// Small pictures of every form in every format with every option: size and checksum of the bytes stand in
// tests/data/written.txt, the same in every build. Whether others read the right pixels in them is tests/oracle's
// question.
#include "support/Ledger.h"
#include "support/PngBuilder.h"
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
unsigned random(unsigned x, unsigned y) {
    static const Samples samples = noise(5);
    return samples(x, y, 0);
}
bool isHole(unsigned x, unsigned y) {
    return (x * x + y * y) % 31 < 9;
}

constexpr Picture pictures[] = {
    {"red-dot", 1, 1, AlphaNone, [](auto, auto) { return of(255, 0, 0); }},
    {"clear", 9, 5, AlphaSimple, [](auto, auto) { return Pixel{}; }},
    {"black-and-white", 9, 5, AlphaNone, [](auto x, auto y) { return gray((x ^ y) % 2 * 255); }},
    {"4-grays", 10, 5, AlphaNone, [](auto x, auto y) { return gray((x + y) % 4 * 85); }},
    {"16-grays", 17, 6, AlphaNone, [](auto x, auto y) { return gray((x + y) % 16 * 17); }},
    {"grays", 16, 16, AlphaNone, [](auto x, auto y) { return gray(y * 16 + x); }},
    {"grays-with-hole", 30, 9, AlphaSimple, [](auto x, auto y) { return isHole(x, y) ? Pixel{} : gray(x * 8); }},
    {"translucent-grays", 50, 60, AlphaComplex, [](auto x, auto y) { return gray(x * 5, y * 4); }},
    {"2-colors", 131, 7, AlphaNone, [](auto x, auto) { return x < 130 ? of(200, 3, 7) : of(9, 200, 90); }},
    {"3-colors-with-hole", 40, 20, AlphaSimple,
     [](auto x, auto y) { return isHole(x, y) ? Pixel{} : of(y / 7 * 100, 4, 90); }},
    {"16-translucent-colors", 64, 16, AlphaComplex,
     [](auto x, auto y) { return of(x / 4 * 16, 90, x / 4 * 3, 10 + random(x / 4, y / 16) % 240); }},
    {"256-colors", 64, 20, AlphaNone, [](auto x, auto y) { return of(x * 4, y / 5 * 80, 7); }},
    {"257-colors", 257, 3, AlphaNone, [](auto x, auto) { return of(x, x / 256, 9); }},
    {"photo", 61, 47, AlphaNone, [](auto x, auto y) { return of(x * 4, y * 5, (x + y) * 2 + random(x, y) % 16); }},
    {"keyed-photo", 40, 33, AlphaSimple,
     [](auto x, auto y) { return isHole(x, y) ? Pixel{} : of(x * 6, y * 7, random(x, y)); }},
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
};

void draw(cPixSheet& sheet, const Picture& picture) {
    std::vector<Pixel> pixels;
    for (std::int32_t i = 0; i < picture.width * picture.height; ++i)
        pixels.push_back(
            picture.at(static_cast<unsigned>(i % picture.width), static_cast<unsigned>(i / picture.width)));
    fill(sheet, picture.width, picture.height, pixels);
    sheet.Alpha(picture.alpha);
    if (picture.name != std::string("cursor")) return;
    HostAccess::ImageType(sheet, imgCursorARGB);
    HostAccess::hotspot(sheet, {20, 9});
}

// The only bytes that depend on the day.
void clearTimeStamp(ByteArray& tga) {
    const auto area = tga.data() + tga.size() - 26 - 495;
    std::fill_n(area + 367, 12, std::uint8_t{0});
}

using Ledger = std::function<void(const std::string& options, bool isSaved, const ByteArray& stream)>;

void writeFlat(const cPixSheet& sheet, const Ledger& add) {
    ByteArray bytes;
    for (const bool keep : {true, false})
        for (const std::int32_t fill : {0, 0x80FF10})
            add(std::string("bmp") + (keep ? " keep" : "") + (fill != 0 ? " on color" : ""),
                sheet.SaveToStream_Bitmap(bytes, keep, fill), bytes);
    for (const std::int32_t quality : {-5, 1, 30, 70, 89, 90, 100})
        add("jpg " + std::to_string(quality), sheet.SaveToStream_JPG(bytes, quality), bytes);
}

void writeTGA(const cPixSheet& sheet, const Ledger& add) {
    for (unsigned flags = 0; flags < 8; ++flags) {
        ByteArray bytes;
        const bool premultiplied = (flags & 4) != 0;
        const bool isSaved = sheet.SaveToStream_TGA(bytes, (flags & 1) != 0, (flags & 2) != 0, premultiplied);
        if (premultiplied && sheet.Alpha() != AlphaNone) clearTimeStamp(bytes);
        add(std::string("tga") + ((flags & 1) != 0 ? " rle" : "") + ((flags & 2) != 0 ? " palette" : "") +
                (premultiplied ? " premultiplied" : ""),
            isSaved, bytes);
    }
}

void writeIndexed(const cPixSheet& sheet, const Ledger& add) {
    ByteArray bytes;
    for (const bool isAdaptive : {true, false})
        for (const std::uint8_t tolerance : std::initializer_list<std::uint8_t>{1, 128, 255})
            add((isAdaptive ? "gif " : "gif web-safe ") + std::to_string(tolerance),
                sheet.SaveToStream_GIF(bytes, isAdaptive, tolerance), bytes);
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
    const std::pair<const char*, std::vector<Setting>> rows[] = {
        {"png", {}},
        {"png level 0", {{pngCompressionLevel, 0}}},
        {"png level 1", {{pngCompressionLevel, 1}}},
        {"png level 9", {{pngCompressionLevel, 9}}},
        {"png no filter", {{pngFilterMethod, filterNone}}},
        {"png sub", {{pngFilterMethod, filterSub}}},
        {"png up", {{pngFilterMethod, filterUp}}},
        {"png average", {{pngFilterMethod, filterAverage}}},
        {"png paeth", {{pngFilterMethod, filterPaeth}}},
        {"png adaptive", {{pngFilterMethod, filterAdaptive}}},
        {"png interlaced", {{pngInterlaced, -1}}},
        {"png interlaced, paeth", {{pngInterlaced, 1}, {pngFilterMethod, filterPaeth}}},
        {"png background", {{pngBackgroundColor, 0x2010F0}}},
        {"png texts, density, time",
         {{pngTitle, "Gr\u00FC\u00DFe"},
          {pngText, "\u65E5\u672C", "Place"},
          {pngComment, std::string(3000, 'n')},
          {pngDescription, std::string(3000, 'n') + "\u65E5"},
          {pngPixelsPerMeterX, 2835},
          {pngLastModified, "2024-02-29 12:34:56"}}},
    };
    for (const auto& [options, settings] : rows) {
        cPixSheet sheet;
        draw(sheet, picture);
        for (const Setting& setting : settings)
            EXPECT_TRUE(sheet.PngPropertySet(setting.property, setting.value, setting.keyword)) << options;
        ByteArray bytes;
        add(options, sheet.SaveToStream_PNG(bytes), bytes);
    }
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
        const auto pixels = pixelsOf(sheet);
        writeFlat(sheet, add);
        writeTGA(sheet, add);
        writeIndexed(sheet, add);
        EXPECT_EQ(pixelsOf(sheet), pixels) << "saving touched " << picture.name;
        writePNG(picture, add);
    }
    compareWithLedger("written.txt", lines.str());
}
