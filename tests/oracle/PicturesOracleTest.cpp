// Every file of tests/data/pictures that we read, against programs and libraries that read its format. Differences on
// purpose stand in docs/formats.md with their reasons; the table here says which files they are met in.
#include "oracle/Readers.h"
#include <regex>

using namespace pixkit;
using namespace pixkit::test;

namespace {

// Files in whose colours a program differs from us on purpose, or which it does not read.
struct Difference {
    const char* files;
    int most; // that a channel may differ by; `unread`: whatever it makes of them
};
constexpr int unread = 256;

using File = std::filesystem::path;
struct Reader {
    const char* name;
    Read (*read)(const File& file, const TemporaryFolder& folder);
    const char* extensions;
    std::vector<Difference> differences;
};

const Reader readers[] = {
    {"libpng",
     [](const File& file, const TemporaryFolder&) { return withLibpng(readFile(file)); },
     ".png",
     {{"png/(odd|order|rule|stream|chunks|smallest|filter-unknown|interlaced-first|wide-.-16.*-trns).*", unread}}},
    {"stb_image",
     [](const File& file, const TemporaryFolder&) {
         Read read = withStb(readFile(file));
         if (read) read->hasAlpha = false; // it judges alpha in its own way
         return read;
     },
     ".tga",
     {{"tga/.*-[46]0(-rle)?.tga|tga/left-.*", unread},
      {"tga/(rgb|map|wide-10)-1[56]-(00|10|20|30|attr|rle|top|0-256|0-300).*|tga/odd-ext.*|tga/(bits-of-alpha|keyed).*",
       6},
      {"tga/(map-.*-(0|9)-40|wide-9-8.*).tga", unread}, // a first entry above 0, and indexes beyond the map
      {"tga/(gray-16|odd-map-of-rgb|map-of-rgb|map-type-2).*", unread}}},
    {"icotool",
     withIcotool,
     ".ico", // It knows no 16 bits, misplaces rows of 24, has no text cursors, and believes directories and masks.
     {{"ico/(?!(mask|cursor)-(1|2|4|8|32)\\.|alpha-(complex|late|simple|none)-straight|two-(1-bit|32-(on|str|opa))).*",
       unread}}},
    {"netpbm",
     withNetpbm,
     ".bmp.tga.gif",
     {{"gif/(screen-(0|smaller)|signature-(small|capitals)|odd-control-length|transparent-nowhere).gif", unread},
      {"gif/code-size-1(-.*)?.gif", unread}, // the format's least is 2
      {"gif/((odd|bad)-(colours|indexes|application-of-0|last-colour)|transparent-behind).*",
       unread},                                                                   // has no colours for them
      {"bmp/header-(16|64)-.*|bmp/odd-header-200.bmp", unread},                   // other versions of the header
      {"bmp/.*-16.bmp|bmp/fields-(none|565-v5|555(-v5)?|1555-v5|123-v5).bmp", 1}, // five bits rounded the other way
      {"bmp/scaled-5-bits.bmp", 1},
      {"bmp/(fields|alpha-v5)-.*", unread},                      // masks behind the header, and all of 32 bits
      {"bmp/((odd-)?rle|codes).*|imagemagick/bmp-co.*", unread}, // run-length codes
      {"bmp/odd-(cut|offset|palette).*", unread},                // what we are lenient about
      {"bmp/(64-bits-|png).*", unread},
      {"tga/.*-[46]0(-rle)?.tga|tga/map-.*-9-40.tga|tga/left-.*", unread}, // right to left, a first entry above 0
      {"tga/(rgb|map|wide-10)-1[56].*|tga/odd-ext.*|tga/(bits-of-alpha-[01]|keyed).*", 6}, // five bits of colour
      {"tga/(gray-16|map-of-rgb|map-type-2|bits-of-alpha-80).*", unread}}},                // colours for us
    {"ImageMagick",
     withMagick,
     ".gif.bmp",
     {{"gif/"
       "(code-size-1(-.*)?|odd-control-length|odd-colours-beyond-(local-)?table(-transparent)?|transparent-taken-back)."
       "gif",
       unread},
      {"gif/((odd|bad)-(indexes-above|last-colour)|transparent-behind).*", unread},
      // Of the other BMP files it has its own opinion: palettes, alpha and what codes do at the end of a row.
      {"(?!bmp/(fields-(abgr|bgra|rgba)-v[35]|codes-4-literals-[13].*|"
       "codes-8-(delta(-right|-over-rows|s)|line|literals-(odd|even)).*)).*bmp",
       unread}}},
};

int allowed(const Reader& reader, const std::string& file) {
    for (const Difference& difference : reader.differences)
        if (std::regex_match(file, std::regex(difference.files))) return difference.most;
    return 0;
}

bool isFor(const Reader& reader, const File& file) {
    return std::string_view(reader.extensions).find(file.extension().string()) != std::string_view::npos;
}

} // namespace

// A machine without the programs fails here: every picture is missing.
TEST(PicturesOracle, ColoursDifferFromOtherReaders) {
    const TemporaryFolder folder;
    const File pictures = sourceFolder() / "tests" / "data" / "pictures";
    int compared = 0;
    for (const File& root : {pictures, sourceFolder() / "samples" / "pictures"}) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
            const File& file = entry.path();
            const std::string name = file.lexically_relative(pictures).generic_string();
            cPixSheet sheet;
            if (!entry.is_regular_file() || !sheet.LoadPicture_Stream(ByteArray(readFile(file)), 0, 0)) continue;
            for (const Reader& reader : readers) {
                const int most = allowed(reader, name);
                if (!isFor(reader, file) || most == unread) continue;
                const Read theirs = reader.read(file, folder);
                EXPECT_TRUE(theirs) << reader.name << " does not read " << name;
                if (theirs) {
                    EXPECT_LE(difference(sheet, *theirs), most) << reader.name << ", " << name;
                    ++compared;
                }
            }
        }
    }
    EXPECT_GT(compared, 800);
}
// SPDX-License-Identifier: MIT
