// Rules that no ledger can say: CRCs, which count only where there is zlib, the byte that an array may lack, the
// greatest size, which form a picture is written in, and which properties are taken.
#include "codecs/png/cPNGparser.h"
#include "coding/ByteWriter.h"
#include "coding/Interlace.h"
#include "coding/deflate/Deflate.h"
#include "support/QuietLoads.h"
#include "surface/HostAccess.h"
#include <optional>

using namespace pixkit;
using namespace pixkit::test;

namespace {

class Png : public QuietLoads {};

std::uint8_t byte(unsigned value) {
    return static_cast<std::uint8_t>(value);
}
Pixel color(unsigned blue, unsigned green, unsigned red, unsigned alpha = 255) {
    return {byte(blue), byte(green), byte(red), byte(alpha)};
}
Pixel gray(unsigned value) {
    return color(value, value, value);
}

std::optional<std::pair<AlphaTypeEnum, Pixel>> load(const Bytes& data, bool fromFile = false, bool withZlib = true) {
    const platform::ScopedFault ownReaderAlone(platform::SeamCall::oleLoadPicture);
    std::optional<platform::ScopedFault> noZlib;
    if (!withZlib) noZlib.emplace(platform::SeamCall::loadLibrary);
    const TemporaryFolder folder;
    if (fromFile) writeFile(folder.path(u8"a.png"), data);
    cPixSheet sheet;
    if (!(fromFile ? sheet.LoadPicture_File(folder.name(u8"a.png")) : sheet.LoadPicture_Stream(ByteArray(data))))
        return {};
    return std::pair(sheet.Alpha(), pixelsOf(sheet)[0]);
}

Bytes saved(const cPixSheet& sheet) {
    ByteArray stream;
    EXPECT_TRUE(sheet.SaveToStream_PNG(stream));
    return bytesOf(stream);
}

// Where a chunk's length begins; the file's end when there is none of the type.
std::size_t chunkOf(const Bytes& file, std::string_view type) {
    const auto found = std::search(file.begin(), file.end(), type.begin(), type.end());
    return found == file.end() ? file.size() : static_cast<std::size_t>(found - file.begin()) - 4;
}

// A picture of 8-bit gray, of value x * 7 + y * 3 + x * y / 5, and its data in chunks of so many bytes. CRCs are 0,
// which is never checked.
unsigned valueAt(std::size_t x, std::size_t y) {
    return static_cast<unsigned>(x * 7 + y * 3 + x * y / 5) % 256;
}
Bytes grayFile(std::size_t width, std::size_t height, bool isInterlaced, std::size_t surplus, std::size_t chunkBytes,
               bool isCut) {
    Bytes rows, stream, file = {0x89, 'P', 'N', 'G', 13, 10, 26, 10};
    for (const InterlacePass& pass : isInterlaced ? std::span<const InterlacePass>(adam7) : wholePicture) {
        for (std::size_t row = 0; row < pass.rows(height) && pass.columns(width) != 0; ++row) {
            rows.push_back(0);
            for (std::size_t i = 0; i < pass.columns(width); ++i)
                rows.push_back(
                    byte(valueAt(pass.startColumn + i * pass.columnStep, pass.startRow + row * pass.rowStep)));
        }
    }
    rows.resize(rows.size() + surplus);
    deflate::compressZlib(rows, 3, stream);
    if (isCut) stream.resize(stream.size() * 2 / 3);
    const auto chunk = [&](std::string_view type, std::span<const std::uint8_t> data) {
        ByteWriter(file).bigEndian32(data.size());
        file.insert(file.end(), type.begin(), type.end());
        file.insert(file.end(), data.begin(), data.end());
        file.resize(file.size() + 4);
    };
    Bytes header;
    ByteWriter(header).bigEndian32(width);
    ByteWriter(header).bigEndian32(height);
    header.insert(header.end(), {8, 0, 0, 0, byte(isInterlaced)});
    chunk("IHDR", header);
    for (std::size_t at = 0; at < stream.size(); at += chunkBytes)
        chunk("IDAT", std::span(stream).subspan(at, std::min(chunkBytes, stream.size() - at)));
    chunk("IEND", {});
    return file;
}

} // namespace

TEST_F(Png, ARowIsLostWhereTheWindowMoves) {
    const platform::ScopedFault ownReaderAlone(platform::SeamCall::oleLoadPicture);
    constexpr std::pair<std::size_t, std::size_t> sizes[] = {{1, 700'000}, {3, 200'000}, {900, 800}, {250'000, 5}};
    for (const auto& [width, height] : sizes) {
        for (unsigned kind = 0; kind < 12; ++kind) {
            const bool isInterlaced = kind % 2 != 0, isCut = kind % 4 / 2 != 0;
            const std::size_t surplus = kind < 4 ? 0 : width * height, chunkBytes = kind % 3 == 0 ? 700 : 1 << 20;
            SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height) + ", " + std::to_string(kind));
            cPixSheet sheet;
            ASSERT_TRUE(
                sheet.LoadPicture_Stream(ByteArray(grayFile(width, height, isInterlaced, surplus, chunkBytes, isCut))));
            std::size_t wrong = 0;
            for (std::size_t y = 0; y < height; ++y) {
                const std::uint8_t* const row = HostAccess::pixels(sheet).rowFromTop(y);
                for (std::size_t x = 0; x < width; ++x)
                    wrong += row[x * 4] != valueAt(x, y) && !(isCut && row[x * 4] == 0);
            }
            EXPECT_EQ(wrong, 0U);
        }
    }
}

TEST_F(Png, CrcsAreHeldAgainstTheWrongChunksOrWithoutZlib) {
    const bool zlibIsHere = cPixSheet().isZlibEnabled();
    const Bytes whole = picture("png/chunks-all.png");
    const auto half = std::optional(std::pair(AlphaSimple, Pixel{15, 10, 5, 128}));
    const auto opaque = std::optional(std::pair(AlphaNone, Pixel{30, 20, 10, 255}));
    const struct {
        const char* chunk;
        decltype(load({})) whenWrong; // where zlib is there to notice
    } rows[] = {{"IHDR", {}}, {"PLTE", {}}, {"IDAT", {}}, {"tRNS", opaque}, {"tEXt", half}, {"IEND", half}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.chunk);
        const std::size_t at = chunkOf(whole, row.chunk);
        const std::size_t crc = at + 8 + whole[at + 3];
        Bytes wrong = whole, zero = whole;
        wrong[crc] ^= 1;
        std::fill_n(zero.begin() + static_cast<std::ptrdiff_t>(crc), 4, std::uint8_t{0});
        for (const bool fromFile : {false, true}) {
            EXPECT_EQ(load(wrong, fromFile), zlibIsHere ? row.whenWrong : half) << "wrong CRC";
            EXPECT_EQ(load(wrong, fromFile, false), half) << "wrong CRC, no zlib";
            EXPECT_EQ(load(zero, fromFile), half) << "a CRC of 0 is never checked";
        }
        if (zlibIsHere && !row.whenWrong) {
            cPixSheet sheet;
            EXPECT_EQ(cPNGparser().LoadStream(wrong, sheet).why.reason(),
                      row.chunk + std::string(": the CRC does not match"));
        }
        wrong.resize(crc + 3); // a cut CRC is not there, so it is not checked
        EXPECT_EQ(load(wrong).has_value(), row.chunk == std::string_view("IEND"));
    }
}

TEST_F(Png, ACutPictureLoadsOrTheToleratedByteIsNot) {
    const Bytes whole = picture("png/rule-trns-high-bytes.png");
    Bytes longer = whole;
    longer.resize(whole.size() + 50);
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(load(cut).has_value(), size + 1 >= whole.size()) << size;
        EXPECT_EQ(load(cut, true).has_value(), size == whole.size()) << size;
        // The byte is missing where a slice ends, although the array goes on.
        const auto length = static_cast<std::int32_t>(size);
        const platform::ScopedFault ownReaderAlone(platform::SeamCall::oleLoadPicture);
        EXPECT_EQ(cPixSheet().LoadPicture_Stream(ByteArray(longer), 32, 32, 0, length),
                  length == 0 || size + 1 >= whole.size());
    }
}

TEST_F(Png, TheGreatestSizeIsRefused) {
    cPixSheet sheet;
    if (!sheet.InitializeDIB(67108863, 1)) GTEST_SKIP() << "no memory for 256 MB here";
    Bytes file = picture("png/bad-1x67108864-0-1.png"); // one too many
    constexpr std::uint8_t size[] = {3, 255, 255, 255, 0, 0, 0, 1};
    std::ranges::copy(size, file.begin() + 16);
    file.resize(29);
    Bytes row;
    deflate::compressZlib(Bytes(67108863 / 8 + 2), deflate::fastestLevel, row);
    ByteWriter rest(file);
    rest.zeros(4); // a CRC that is not checked, as the others
    rest.bigEndian32(row.size());
    rest.text("IDAT");
    rest.bytes(row);
    rest.zeros(8);
    rest.text("IEND");
    rest.zeros(4);
    ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(file)));
    EXPECT_EQ(sheet.Width(), 67108863);
}

TEST_F(Png, AFormIsNotTheSmallestThatHoldsThePicture) {
    const Pixel clear{};
    const Samples dots = noise(3);
    struct Row {
        const char* what;
        AlphaTypeEnum alpha;
        std::int32_t width, height;
        std::function<Pixel(unsigned, unsigned)> at;
        int colorType, bitDepth;
        std::size_t transparency; // bytes of tRNS
    };
    const Row rows[] = {
        {"black and white", AlphaNone, 9, 5, [](auto x, auto y) { return gray((x ^ y) % 2 * 255); }, 0, 1, 0},
        {"four grays", AlphaNone, 9, 5, [](auto x, auto y) { return gray((x + y) % 4 * 85); }, 0, 2, 0},
        {"all grays", AlphaNone, 16, 16, [](auto x, auto y) { return gray(y * 16 + x); }, 0, 8, 0},
        {"grays of no depth", AlphaNone, 300, 300, [](auto x, auto) { return gray(10 + x % 2); }, 3, 1, 0},
        {"black, white and clear", AlphaSimple, 9, 5,
         [=](auto x, auto) { return x % 3 == 0 ? clear : gray(x % 3 == 1 ? 0 : 255); }, 0, 8, 2},
        {"black, white and clear, many", AlphaSimple, 90, 50,
         [=](auto x, auto y) { return x % 3 == 0 ? clear : gray(dots(x, y, 0) % 2 * 255); }, 3, 2, 1},
        {"all grays and clear", AlphaSimple, 64, 64,
         [=](auto x, auto y) { return x == 0 ? clear : gray((y * 64 + x) % 255); }, 0, 8, 2},
        {"three colours, one clear", AlphaSimple, 200, 40,
         [=](auto x, auto) { return x % 3 == 0 ? clear : color(1, 2, x % 3); }, 3, 2, 1},
        {"16 translucent colours", AlphaComplex, 200, 40, [](auto x, auto) { return color(x % 16, 0, x % 16, 200); }, 3,
         4, 16},
        {"256 colours, half of them translucent", AlphaComplex, 256, 300,
         [](auto x, auto) { return color(x / 2, 0, 3, x % 2 == 0 ? 255 : 128); }, 3, 8, 128},
        {"many colours", AlphaNone, 300, 260, [](auto x, auto y) { return color(x, y, 7); }, 2, 8, 0},
        {"many colours and clear", AlphaSimple, 300, 260,
         [=](auto x, auto y) { return x < 9 ? clear : color(x, y, 0); }, 2, 8, 6},
        {"many colours, translucent", AlphaComplex, 300, 260,
         [](auto x, auto y) { return color(x % 100, y % 100, 50, 100 + (x + y) % 156); }, 6, 8, 0},
        {"grays, translucent", AlphaComplex, 300, 260,
         [](auto x, auto y) { return color(x % 100, x % 100, x % 100, 100 + y % 156); }, 4, 8, 0},
        {"one pixel: a palette would be longer", AlphaNone, 1, 1, [](auto, auto) { return color(0, 0, 255); }, 2, 8, 0},
        {"alpha that means nothing", AlphaNone, 2, 1, [](auto x, auto) { return color(255, 255, 255, x); }, 0, 1, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        cPixSheet sheet;
        draw(sheet, row.width, row.height, row.alpha, row.at);
        const Bytes file = saved(sheet);
        EXPECT_EQ(file[25], row.colorType);
        EXPECT_EQ(file[24], row.bitDepth);
        const std::size_t trns = chunkOf(file, "tRNS");
        EXPECT_EQ(trns == file.size() ? 0U : file[trns + 3], row.transparency);
    }
}

// The rest of them is in tests/data/transcripts/properties.txt.
TEST_F(Png, TextsOfCharactersThatPngDoesNotAllowAreTaken) {
    // Not: control characters, cut short, half a surrogate pair, longer than need be.
    for (const auto& [text, isTaken] : {std::pair<std::string, bool>{"two\r\nlines\tand a tab", true},
                                        {"\x01", false},
                                        {"\xC3", false},
                                        {"\xED\xA0\x80", false},
                                        {"\xC0\x80", false},
                                        {{"a\0b", 3}, false}}) {
        cPixSheet sheet;
        EXPECT_EQ(sheet.PngPropertySet(pngTitle, text), isTaken) << text;
        EXPECT_EQ(sheet.PngPropertyGet(pngTitle), isTaken ? PngValue(text) : PngValue());
        EXPECT_FALSE(sheet.PngPropertySet(pngText, "text", "line\n"));
    }
}
// SPDX-License-Identifier: MIT
