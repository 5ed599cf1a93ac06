// Every picture of tests/data/pictures is written in every format, and other people's libraries and programs read it.
#include "oracle/Readers.h"
#include "oracle/libjpegVerdict.h"
#include <zlib.h>

using namespace pixkit;
using namespace pixkit::test;

namespace {

// As a format without premultiplied colours holds it; alpha counts where the picture says so.
std::vector<Pixel> straightOf(const cPixSheet& sheet, bool isPremultiplied) {
    ByteArray bits;
    EXPECT_TRUE(sheet.GetDIBbits(bits, false, true, true, true, false, 0, 0, 0, 0, isPremultiplied));
    std::vector<Pixel> pixels;
    for (std::size_t i = 0; i < bits.size(); i += 4) {
        const std::uint8_t* const p = bits.data() + i;
        pixels.push_back({p[0], p[1], p[2], sheet.Alpha() == AlphaNone ? std::uint8_t{255} : p[3]});
    }
    return pixels;
}

// Straight as PNG and TGA files hold it: rounded up, so that premultiplying, which rounds down, undoes it.
std::vector<Pixel> roundedUp(std::vector<Pixel> stored) {
    for (Pixel& pixel : stored)
        for (std::size_t channel = 0; channel < 3 && pixel[3] != 0; ++channel)
            pixel[channel] = static_cast<std::uint8_t>((pixel[channel] * 255 + pixel[3] - 1) / pixel[3]);
    return stored;
}

// Calls `visit` with each picture that loads and is one: colours do not exceed their alpha.
template <class Visit>
void forEachPicture(Visit&& visit) {
    const auto root = sourceFolder() / "tests" / "data" / "pictures";
    int visited = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        cPixSheet sheet;
        if (!entry.is_regular_file() || !sheet.LoadPicture_Stream(ByteArray(readFile(entry.path())), 0, 0)) continue;
        const auto isPossible = [](const Pixel& p) { return std::max({p[0], p[1], p[2]}) <= p[3]; };
        if (!std::ranges::all_of(pixelsOf(sheet), isPossible)) continue;
        SCOPED_TRACE(entry.path());
        visit(sheet);
        if (testing::Test::HasFailure()) return;
        ++visited;
    }
    EXPECT_GT(visited, 600);
}

// Without the colours of clear pixels, which mean nothing.
void expectPixels(const Read& read, std::vector<Pixel> expected, const char* what) {
    ASSERT_TRUE(read) << what << " cannot be read";
    auto found = read->pixels;
    for (auto* const pixels : {&found, &expected})
        std::ranges::replace_if(
            *pixels, [](const Pixel& p) { return p[3] == 0; }, Pixel{});
    EXPECT_TRUE(found == expected) << "other pixels in " << what;
}

// The payload of the only IDAT.
std::span<const std::uint8_t> pngStream(std::span<const std::uint8_t> file) {
    constexpr std::string_view type = "IDAT";
    const auto found = std::search(file.begin(), file.end(), type.begin(), type.end());
    const auto place = static_cast<std::size_t>(found - file.begin());
    const std::uint8_t* const length = &file[place - 4];
    return file.subspan(place + 4, length[0] << 24 | length[1] << 16 | length[2] << 8 | length[3]);
}

// As many bytes as zlib's level 6 makes of the rows in a stream.
std::size_t zlibSize(std::span<const std::uint8_t> stream) {
    std::vector<std::uint8_t> rows(std::size_t{1} << 24);
    uLongf size = rows.size();
    EXPECT_EQ(uncompress(rows.data(), &size, stream.data(), stream.size()), Z_OK);
    uLongf packed = compressBound(size);
    std::vector<std::uint8_t> other(packed);
    EXPECT_EQ(compress2(other.data(), &packed, rows.data(), size, 6), Z_OK);
    return packed;
}

} // namespace

// All together, and each nearly: what a block costs is estimated, which misses some bytes of the smallest.
TEST(WrittenOracle, PngStreamsAreLargerThanZlibMakesThem) {
    std::size_t total = 0, zlibs = 0;
    forEachPicture([&](cPixSheet& sheet) {
        ByteArray file, smaller;
        ASSERT_TRUE(sheet.SaveToStream_PNG(file));
        const std::span stream = pngStream({file.data(), file.size()});
        const std::size_t most = zlibSize(stream);
        EXPECT_LE(stream.size(), most + std::max<std::size_t>(most / 50, 10));
        total += stream.size();
        zlibs += most;
        sheet.PngPropertySet(pngCompressionLevel, 9);
        ASSERT_TRUE(sheet.SaveToStream_PNG(smaller));
        EXPECT_LE(smaller.size(), file.size());
    });
    EXPECT_LE(total, zlibs);
}

TEST(WrittenOracle, OthersReadOtherPixels) {
    const TemporaryFolder folder;
    std::mt19937 random(31);
    int number = 0;
    forEachPicture([&](cPixSheet& sheet) {
        const bool hasAlpha = sheet.Alpha() != AlphaNone;
        const auto stored = straightOf(sheet, true), straight = straightOf(sheet, false);
        const auto written = roundedUp(stored);
        ByteArray file;
        sheet.PngPropertySet(pngInterlaced, random() % 2 == 0 ? 1 : 0);
        sheet.PngPropertySet(pngFilterMethod, static_cast<std::int32_t>(random() % 7));
        sheet.PngPropertySet(pngCompressionLevel, static_cast<std::int32_t>(random() % 10));
        if (random() % 3 == 0)
            sheet.PngPropertySet(pngBackgroundColor, static_cast<std::int32_t>(random() % 0x1000000));
        sheet.PngPropertySet(pngTitle, "Gr\xC3\xB6\xC3\x9F"
                                       "e\r\nin two lines");
        sheet.PngPropertySet(pngComment, std::string(random() % 600, '.') + "\xE5\x9B\xB3");
        sheet.PngPropertySet(pngLastModified, "1999-12-31 23:59:59");
        ASSERT_TRUE(sheet.SaveToStream_PNG(file));
        expectPixels(withLibpng(bytesOf(file)), written, "PNG");
        if (++number % 5 == 0) writeFile(folder.path(u8"") / (std::to_string(number) + ".png"), bytesOf(file));
        for (unsigned options = 0; options < 8; ++options) {
            const bool asStored = (options & 4) != 0;
            ASSERT_TRUE(sheet.SaveToStream_TGA(file, (options & 1) != 0, (options & 2) != 0, asStored));
            expectPixels(withStb(bytesOf(file)), asStored ? stored : written, "TGA");
        }
        ASSERT_TRUE(sheet.SaveToStream_Bitmap(file, true));
        const bool isClear = std::ranges::all_of(stored, [](const Pixel& p) { return p[3] == 0; });
        if (hasAlpha && !isClear) expectPixels(withStb(bytesOf(file)), stored, "BMP");
        ASSERT_TRUE(sheet.SaveToStream_GIF(file));
        const Read gif = withGiflib(bytesOf(file));
        ASSERT_TRUE(gif && gif->width == sheet.Width());
        std::vector<Pixel> keyed = straight;
        for (Pixel& pixel : keyed)
            pixel = pixel[3] < 128 ? Pixel{} : Pixel{pixel[0], pixel[1], pixel[2], 255};
        auto colors = keyed;
        std::ranges::sort(colors);
        colors.erase(std::unique(colors.begin(), colors.end()), colors.end());
        if (colors.size() < 256) expectPixels(gif, keyed, "GIF");
        ASSERT_TRUE(sheet.SaveToStream_JPG(file, number % 101));
        const JpegPicture jpeg = decodeJpeg(file.data(), file.size());
        EXPECT_TRUE(jpeg.warnings == 0 && jpeg.width == static_cast<unsigned>(sheet.Width())) << "JPEG";
    });
    // Quiet when all is well; of zTXt and iTXt only the kind is said, and only when asked.
    EXPECT_EQ(shell(folder, "pngcheck -q *.png >said 2>&1"), 0);
    EXPECT_EQ(readFile(folder.path(u8"said")).size(), 0U);
}

// Images of every depth: icotool and ImageMagick find the pixels that our reader finds, and pngcheck has nothing to say
// of the PNG files.
TEST(WrittenOracle, OthersReadOtherPixelsInIcons) {
    const TemporaryFolder folder;
    cPixSheet sheet;
    const Samples random = noise(8);
    draw(sheet, 90, 70, AlphaComplex, [&](unsigned x, unsigned y) {
        const unsigned alpha = x < 20 ? 0 : x < 40 ? random(x, y, 3) % 256 : 255;
        const auto channel = [&](unsigned value) { return static_cast<std::uint8_t>(value % 256 * alpha / 255); };
        return Pixel{channel(random(x, y, 0)), channel(x), channel(y), static_cast<std::uint8_t>(alpha)};
    });
    std::vector<IconEntrySize> sizes;
    for (const std::int32_t depth : {1, 4, 8, 24, 32})
        for (const std::int32_t side : {5, 16, 33, 70, 255})
            sizes.push_back({side, side, depth});
    sizes.push_back({300, 300, 32}); // one PNG file: icotool does not choose between two
    ASSERT_EQ(sheet.SaveToFile_ICO(folder.name(u8"the.ico"), {}, false, sizes), 26);
    EXPECT_EQ(shell(folder, "convert-im6.q16 the.ico -depth 8 PNG32:im-%d.png"), 0);
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const auto& [width, height, depth] = sizes[i];
        SCOPED_TRACE(testing::Message() << width << " pixels at " << depth << " bits");
        EXPECT_EQ(
            shell(folder, "icotool -x --index=" + std::to_string(i + 1) + " -o the.png the.ico && pngcheck -q the.png"),
            0);
        cPixSheet ours;
        ASSERT_TRUE(ours.LoadPicture_File(folder.name(u8"the.ico"), width, height, false, depth));
        const auto theirs = withLibpng(readFile(folder.path(u8"the.png")));
        const auto magick = withLibpng(readFile(folder.path(u8"") / ("im-" + std::to_string(i) + ".png")));
        ASSERT_TRUE(theirs && magick);
        if (depth != 24 || width % 4 == 0) { // other rows are misplaced there
            EXPECT_EQ(difference(ours, *theirs), 0) << "icotool";
        }
        EXPECT_EQ(difference(ours, *magick), 0) << "ImageMagick";
    }
}
// SPDX-License-Identifier: MIT
