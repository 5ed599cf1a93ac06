// Every BMP, TGA and GIF file of tests/data/pictures that we read, against netpbm, TGA against stb_image and GIF
// against ImageMagick too. Differences on purpose stand in docs/formats.md with their reasons; the table here says
// which files they are met in.
#include "support/Pictures.h"
#include "support/SourceFolder.h"
#include <algorithm>
#include <cstdlib>
#include <optional>
#include <regex>
#include <sstream>
#include <stb/stb_image.h>

using namespace pixkit;
using namespace pixkit::test;

namespace {

using Bytes = std::vector<std::uint8_t>;

const std::filesystem::path pictures = sourceFolder() / "tests" / "data" / "pictures";

// Straight R, G, B from the top row.
struct Colours {
    std::int32_t width = 0, height = 0;
    Bytes rgb;
    Bytes alpha = {}; // where the program tells
};
using Read = std::optional<Colours>; // nothing: it could not be read

Read withStb(const std::filesystem::path& file, const TemporaryFolder&) {
    Colours colours;
    int channels = 0;
    stbi_uc* const pixels = stbi_load(file.c_str(), &colours.width, &colours.height, &channels, 3);
    if (pixels == nullptr) return {};
    const auto bytes = static_cast<std::size_t>(colours.width) * static_cast<std::size_t>(colours.height) * 3;
    colours.rgb.assign(pixels, pixels + bytes);
    stbi_image_free(pixels);
    return colours;
}

// Through a PPM file, whose header is made of words and whose pixels are what we want.
Read withNetpbm(const std::filesystem::path& file, const TemporaryFolder& folder) {
    const std::string program = file.extension() == ".bmp"   ? "bmptopnm"
                                : file.extension() == ".gif" ? "giftopnm"
                                                             : "tgatoppm";
    const std::string out = folder.path(u8"out.ppm").string();
    std::system(
        (program + " -quiet '" + file.string() + "' 2>/dev/null | ppmtoppm >'" + out + "' 2>/dev/null").c_str());
    const Bytes ppm = readFile(out);
    std::istringstream header(std::string(ppm.begin(), ppm.end()));
    std::string magic;
    Colours colours;
    int most = 0;
    if (!(header >> magic >> colours.width >> colours.height >> most) || most > 255) return {};
    for (auto at = static_cast<std::size_t>(header.tellg()) + 1; at < ppm.size(); ++at)
        colours.rgb.push_back(static_cast<std::uint8_t>(ppm[at] * 255 / most));
    return colours;
}

// The first picture alone, without its place on the logical screen.
Read withMagick(const std::filesystem::path& file, const TemporaryFolder& folder) {
    const std::string out = folder.path(u8"out.rgba").string();
    std::filesystem::remove(out);
    std::system(
        ("convert-im6.q16 'gif:" + file.string() + "[0]' +repage -depth 8 rgba:'" + out + "' 2>/dev/null").c_str());
    if (!std::filesystem::exists(out)) return {};
    const Bytes rgba = readFile(out);
    Colours colours;
    for (std::size_t at = 0; at + 4 <= rgba.size(); at += 4) {
        colours.rgb.insert(colours.rgb.end(), {rgba[at], rgba[at + 1], rgba[at + 2]});
        colours.alpha.push_back(rgba[at + 3]);
    }
    return colours;
}

// The greatest difference to ours, of a channel; most know nothing of alpha, and ours may have been premultiplied
// already.
int difference(const std::vector<Pixel>& ours, const Colours& theirs) {
    if (theirs.rgb.size() != ours.size() * 3) return 256;
    int asStored = 0;
    int multiplied = 0;
    if (!theirs.alpha.empty() &&
        !std::ranges::equal(ours, theirs.alpha, {}, [](const Pixel& pixel) { return pixel[3]; }))
        return 256;
    for (std::size_t i = 0; i < ours.size(); ++i) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            const int value = theirs.rgb[i * 3 + 2 - channel];
            asStored = std::max(asStored, std::abs(ours[i][channel] - value));
            multiplied = std::max(multiplied, std::abs(ours[i][channel] - value * ours[i][3] / 255));
        }
    }
    return std::min(asStored, multiplied);
}

// Files in whose colours a program differs from us on purpose, or which it does not read.
struct Difference {
    const char* files;
    int most; // that a channel may differ by; `unread`: whatever it makes of them
};
constexpr int unread = 256;

struct Program {
    const char* name;
    Read (*read)(const std::filesystem::path&, const TemporaryFolder&);
    const char* extensions;
    std::vector<Difference> differences;
};

const Program programs[] = {
    {"netpbm",
     withNetpbm,
     ".bmp.tga.gif",
     {{"gif/(screen-(0|smaller)|signature-(small|capitals)|odd-control-length|transparent-nowhere).gif", unread},
      {"gif/code-size-1(-.*)?.gif", unread},                                      // the format's least is 2
      {"gif/odd-colours-beyond.*", unread},                                       // has no colours for them
      {"bmp/header-(16|64)-.*|bmp/odd-header-200.bmp", unread},                   // other versions of the header
      {"bmp/.*-16.bmp|bmp/fields-(none|565-v5|555(-v5)?|1555-v5|123-v5).bmp", 1}, // five bits rounded the other way
      {"bmp/fields-.*", unread},                               // masks behind the header, and all of 32 bits
      {"(bmp/(odd-)?rle.*)|imagemagick/bmp-co.*", unread},     // run-length codes
      {"bmp/odd-(cut|offset|palette).*", unread},              // what we are lenient about
      {"tga/.*-[46]0(-rle)?.tga|tga/map-.*-9-40.tga", unread}, // right to left, and a first entry above 0
      {"tga/(rgb|map|wide-10)-1[56].*|tga/odd-ext.*", 6},      // five bits of colour
      {"tga/gray-16.*", unread}}},                             // colours for us
    {"ImageMagick",
     withMagick,
     ".gif",
     {{"gif/(code-size-1(-.*)?|odd-control-length|odd-colours-beyond-table|transparent-taken-back).gif", unread}}},
    {"stb_image",
     withStb,
     ".tga",
     {{"tga/.*-[46]0(-rle)?.tga", unread},
      {"tga/(rgb|map|wide-10)-1[56]-(00|10|20|30|attr|rle|top|0-256|0-300).*|tga/odd-ext.*", 6},
      {"tga/(map-.*-(0|9)-40|wide-9-8.*).tga", unread}, // a first entry above 0, and indexes beyond the map
      {"tga/gray-16.*|tga/odd-map-of-rgb.tga", unread}}},
};

int allowed(const Program& program, const std::string& file) {
    for (const Difference& difference : program.differences)
        if (std::regex_match(file, std::regex(difference.files))) return difference.most;
    return 0;
}

} // namespace

TEST(PicturesOracle, ColoursDifferFromOtherPrograms) {
    const TemporaryFolder folder;
    int compared = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(pictures)) {
        const std::string name = entry.path().lexically_relative(pictures).generic_string();
        cPixSheet sheet;
        if (!entry.is_regular_file() || !sheet.LoadPicture_Stream(ByteArray(readFile(entry.path())))) continue;
        const std::vector<Pixel> ours = pixelsOf(sheet);
        for (const Program& program : programs) {
            const int most = allowed(program, name);
            const bool isTheirs =
                std::string_view(program.extensions).find(entry.path().extension().string()) != std::string_view::npos;
            if (!isTheirs || most == unread) continue;
            const Read theirs = program.read(entry.path(), folder);
            EXPECT_TRUE(theirs) << program.name << " does not read " << name;
            if (theirs) {
                EXPECT_LE(difference(ours, *theirs), most) << program.name << ", " << name;
                ++compared;
            }
        }
    }
    EXPECT_GT(compared, 500);
}
