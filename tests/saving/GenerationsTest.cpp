// Files that keep translucent pixels keep them as they are, however often they are loaded and saved again.
#include "support/QuietLoads.h"
#include "surface/HostAccess.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class Generations : public QuietLoads {};

constexpr unsigned seeds = 40;

struct Named {
    std::string name;
    std::function<void(cPixSheet&)> draw;
};

// Dark ones show nowhere that their colours are straight when they are: not even straight does one exceed its alpha.
std::vector<Named> pictures() {
    const auto pair = [](unsigned x, unsigned y, unsigned width) {
        unsigned rest = y * width + x, alpha = 0;
        for (; alpha < 255 && rest > alpha; ++alpha)
            rest -= alpha + 1;
        const auto channel = static_cast<std::uint8_t>(std::min(rest, alpha));
        return Pixel{channel, static_cast<std::uint8_t>(alpha - channel), channel, static_cast<std::uint8_t>(alpha)};
    };
    std::vector<Named> all;
    for (const unsigned width : {255U, 257U}) // a bitmap, and a PNG image, in icons
        all.push_back({"every pair " + std::to_string(width), [=](cPixSheet& sheet) {
                           draw(sheet, static_cast<std::int32_t>(width), 130, AlphaComplex,
                                [=](unsigned x, unsigned y) { return pair(x, y, width); });
                       }});
    for (const bool hasClear : {true, false})
        all.push_back({std::string("dark") + (hasClear ? "" : ", nowhere clear"), [=](cPixSheet& sheet) {
                           draw(sheet, 20, 9, AlphaComplex, [=](unsigned x, unsigned y) {
                               const unsigned alpha = 20 * (x % 12) + (hasClear ? 0 : 9) + y;
                               const auto channel = static_cast<std::uint8_t>(alpha * alpha / 255 * y / 9);
                               return Pixel{channel, 0, channel, static_cast<std::uint8_t>(alpha)};
                           });
                       }});
    all.push_back(
        {"clear", [](cPixSheet& sheet) { draw(sheet, 5, 3, AlphaSimple, [](auto, auto) { return Pixel{}; }); }});
    for (unsigned seed = 0; seed < seeds; ++seed)
        all.push_back({"random " + std::to_string(seed), [=](cPixSheet& sheet) {
                           Random random(seed);
                           const std::int32_t width = random.between(1, 40), height = random.between(1, 40);
                           random.fill(sheet, width, height);
                       }});
    return all;
}

struct Format {
    const char* name;
    bool (*save)(cPixSheet& sheet, ByteArray& file);
    const char* isNotKept; // a picture that the format cannot hold
};

bool saveCursor(cPixSheet& sheet, ByteArray& file) {
    HostAccess::ImageType(sheet, imgCursorARGB);
    return sheet.SaveToStream_ICO(file) == 1;
}

// Alpha that is 0 everywhere says nothing in BMP and TGA files. A straight TGA picture needs a clear pixel to say that
// it is one, where nothing else does.
constexpr Format formats[] = {
    {"PNG", [](auto& sheet, auto& file) { return sheet.SaveToStream_PNG(file); }, ""},
    {"ICO", [](auto& sheet, auto& file) { return sheet.SaveToStream_ICO(file) == 1; }, ""},
    {"CUR", saveCursor, ""},
    {"straight TGA", [](auto& sheet, auto& file) { return sheet.SaveToStream_TGA(file, true); }, "dark, nowhere clear"},
    {"TGA", [](auto& sheet, auto& file) { return sheet.SaveToStream_TGA(file, true, false, true); }, ""},
    {"BMP", [](auto& sheet, auto& file) { return sheet.SaveToStream_Bitmap(file, true); }, ""},
};

} // namespace

TEST_F(Generations, ASaveChangesAPicture) {
    for (const Named& picture : pictures()) {
        for (const Format& format : formats) {
            SCOPED_TRACE(picture.name + " in " + format.name);
            const bool isFlat = format.name == std::string("BMP") || std::string(format.name).ends_with("TGA");
            if (picture.name == format.isNotKept || (picture.name == "clear" && isFlat)) continue;
            cPixSheet sheet;
            picture.draw(sheet);
            const auto pixels = pixelsOf(sheet);
            for (int generation = 1; generation <= 10; ++generation) {
                ByteArray file;
                ASSERT_TRUE(format.save(sheet, file) && sheet.LoadPicture_Stream(file, 0, 0));
                ASSERT_TRUE(pixelsOf(sheet) == pixels) << "after " << generation;
                sheet.Alpha(AlphaComplex); // which a palette's, of a PNG file, would be AlphaSimple
            }
        }
    }
}
// SPDX-License-Identifier: MIT
