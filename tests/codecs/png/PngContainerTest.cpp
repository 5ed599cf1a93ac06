// Chunks, their checks, and the compressed data: what loads, what does not, and that it is the same from files and
// arrays, with and without zlib, wherever no rule says otherwise.
#include "coding/deflate/StreamWriter.h"
#include "support/PngLoading.h"
#include <algorithm>

using namespace pixkit;
using namespace pixkit::test;
using deflate_test::StreamWriter;

namespace {

class PngContainer : public QuietLoads {};

const Loaded nothing;

// Most rows are about this picture: one pixel of colour (R 10, G 20, B 30).
const PngImage rgb{1, 1, 8, 2};
const Bytes rgbStream = zlibStored({0, 10, 20, 30});
const Loaded rgbLoaded{1, 1, {{30, 20, 10, 255}}, AlphaNone};

// The same colour from a palette, half transparent by tRNS.
const PngImage indexed{1, 1, 8, 3};
const Bytes indexStream = zlibStored({0, 0});
const Bytes palette = {10, 20, 30};
const Loaded halfLoaded{1, 1, {{15, 10, 5, 128}}, AlphaSimple};

Loaded onePixel(Pixel pixel, AlphaTypeEnum alpha = AlphaNone) {
    return {1, 1, {pixel}, alpha};
}

struct Case {
    const char* fault; // what goes wrong when the row fails
    Bytes data;
    Loaded expected;
};

void expectEveryWay(const Case& row) {
    for (const Source source : {Source::stream, Source::file}) {
        for (const bool withZlib : {true, false}) {
            EXPECT_EQ(load(row.data, source, withZlib), row.expected)
                << row.fault << (source == Source::file ? ", file" : ", stream") << (withZlib ? "" : ", no zlib");
        }
    }
}

} // namespace

TEST_F(PngContainer, CrcsAreHeldAgainstTheWrongChunksOrWithoutZlib) {
    const bool zlibIsHere = cPixSheet().isZlibEnabled();
    const auto picture = [](std::string_view damagedChunk, Crc damage) {
        const auto crcOf = [&](std::string_view type) { return type == damagedChunk ? damage : Crc::right; };
        return PngBuilder()
            .IHDR(indexed, crcOf("IHDR"))
            .chunk("PLTE", palette, crcOf("PLTE"))
            .chunk("tRNS", {128}, crcOf("tRNS"))
            .chunk("tEXt", {'a', 0, 'b'}, crcOf("tEXt"))
            .IDAT(indexStream, 0, crcOf("IDAT"))
            .chunk("IEND", {}, crcOf("IEND"))
            .data();
    };
    const struct {
        const char* chunk;
        Loaded whenWrong; // where zlib is there to notice
    } rows[] = {
        {"IHDR", nothing},    {"PLTE", nothing},    {"IDAT", nothing}, {"tRNS", onePixel({30, 20, 10, 255})},
        {"tEXt", halfLoaded}, {"IEND", halfLoaded},
    };
    for (const auto& row : rows) {
        for (const Source source : {Source::stream, Source::file}) {
            SCOPED_TRACE(row.chunk);
            const Bytes wrong = picture(row.chunk, Crc::wrong);
            EXPECT_EQ(load(wrong, source), zlibIsHere ? row.whenWrong : halfLoaded) << "wrong CRC";
            EXPECT_EQ(load(wrong, source, false), halfLoaded) << "wrong CRC, no zlib";
            EXPECT_EQ(load(picture(row.chunk, Crc::zero), source), halfLoaded) << "a CRC of 0 is never checked";
        }
    }
}

TEST_F(PngContainer, ChunksOutOfOrderRepeatedOrEmptyAreMisread) {
    const PngImage square{2, 2, 8, 2};
    const PngImage greyAlpha{1, 1, 8, 4};
    const PngImage impossible{1, 1, 8, 5};
    const Case rows[] = {
        {"IDAT before IHDR", PngBuilder().IDAT(rgbStream).IHDR(rgb).IEND(), rgbLoaded},
        {"IDAT in two with another chunk between",
         PngBuilder()
             .IHDR(rgb)
             .IDAT({rgbStream.begin(), rgbStream.begin() + 6})
             .chunk("tIME", {1, 2})
             .IDAT({rgbStream.begin() + 6, rgbStream.end()})
             .IEND(),
         rgbLoaded},
        {"IDAT of single bytes", PngBuilder().IHDR(rgb).IDAT(rgbStream, 1).IEND(), rgbLoaded},
        {"second IHDR replaces the first", PngBuilder().IHDR(square).IHDR(rgb).IDAT(rgbStream).IEND(), rgbLoaded},
        {"second IHDR after the data", PngBuilder().IHDR(square).IDAT(rgbStream).IHDR(rgb).IEND(), rgbLoaded},
        {"a palette left over from an earlier IHDR gives greys, not colours",
         PngBuilder().IHDR(indexed).chunk("PLTE", palette).IHDR({1, 1, 8, 0}).IDAT(indexStream).IEND(),
         onePixel({10, 10, 10, 255})},
        {"second IHDR is impossible", PngBuilder().IHDR(rgb).IHDR(impossible).IDAT(rgbStream).IEND(), nothing},
        {"second PLTE and tRNS replace the first, before and after the data",
         PngBuilder()
             .IHDR(indexed)
             .chunk("tRNS", {9})
             .chunk("PLTE", {1, 2, 3, 4, 5, 6})
             .IDAT(indexStream)
             .chunk("PLTE", palette)
             .chunk("tRNS", {128})
             .IEND(),
         halfLoaded},
        {"PLTE before IHDR is unread, and its length unchecked",
         PngBuilder().chunk("PLTE", {1, 2, 3, 4}, Crc::wrong).IHDR(indexed).IDAT(indexStream).IEND(),
         onePixel({0, 0, 0, 255})},
        {"PLTE of a grey picture is unread, its length and CRC too",
         png(greyAlpha, {0, 50, 255}, PngBuilder().chunk("PLTE", {1, 2}, Crc::wrong)),
         onePixel({50, 50, 50, 255}, AlphaComplex)},
        {"PLTE of a length that is no multiple of 3", png(indexed, {0, 0}, PngBuilder().chunk("PLTE", {1, 2, 3, 4})),
         nothing},
        {"PLTE of such a length in an RGB picture", png(rgb, {0, 1, 2, 3}, PngBuilder().chunk("PLTE", {1, 2})),
         nothing},
        {"tRNS beside an alpha channel", png(greyAlpha, {0, 50, 255}, PngBuilder().chunk("tRNS", {0, 50})),
         onePixel({50, 50, 50, 255}, AlphaComplex)},
        {"empty chunks of every kind, CRCs wrong",
         PngBuilder()
             .chunk("IHDR", {}, Crc::wrong)
             .IHDR(rgb)
             .chunk("PLTE", {}, Crc::wrong)
             .chunk("tRNS", {}, Crc::wrong)
             .chunk("IDAT", {}, Crc::wrong)
             .IDAT(rgbStream)
             .chunk("tEXt")
             .IEND(),
         rgbLoaded},
        {"IEND with data ends the picture",
         PngBuilder().IHDR(rgb).IDAT(rgbStream).chunk("IEND", {1, 2, 3}).chunk("IHDR", {1}).data(), rgbLoaded},
        {"bytes behind IEND",
         PngBuilder().IHDR(rgb).IDAT(rgbStream).chunk("IEND").bytes({0xFF, 0xFF, 0xFF, 0xFF}).data(), rgbLoaded},
        {"IHDR of 14 bytes",
         PngBuilder().chunk("IHDR", {0, 0, 0, 1, 0, 0, 0, 1, 8, 2, 0, 0, 0, 77}).IDAT(rgbStream).IEND(), rgbLoaded},
        {"IHDR of 12 bytes", PngBuilder().chunk("IHDR", {0, 0, 0, 1, 0, 0, 0, 1, 8, 2, 0, 0}).IDAT(rgbStream).IEND(),
         nothing},
        {"chunk types differ by case",
         PngBuilder().IHDR(rgb).chunk("iDAT", {1}).chunk("iEND", {1}).IDAT(rgbStream).IEND(), rgbLoaded},
        {"no IHDR", PngBuilder().IDAT(rgbStream).chunk("tEXt", Bytes(40)).IEND(), nothing},
        {"no IDAT", PngBuilder().IHDR(rgb).chunk("tEXt", {1, 2, 3}).IEND(), nothing},
        {"no IEND", PngBuilder().IHDR(rgb).IDAT(rgbStream).data(), nothing},
    };
    for (const Case& row : rows)
        expectEveryWay(row);
}

TEST_F(PngContainer, ChunkLengthsLeadOutOfTheDataOrBack) {
    const Bytes start = PngBuilder().IHDR(rgb).IDAT(rgbStream).data();
    const auto restAfterLength = static_cast<std::uint8_t>(8 + 3 + 4 + 12);
    for (const Bytes& length : {Bytes{0, 0, 0, restAfterLength},
                                {0x7F, 0xFF, 0xFF, 0xFF},
                                {0x80, 0, 0, 0},
                                {0xFF, 0xFF, 0xFF, 0xF4},
                                {0xFF, 0xFF, 0xFF, 0xFF},
                                // minus the bytes so far: the walk would come back to IHDR for ever
                                {0xFF, 0xFF, 0xFF, static_cast<std::uint8_t>(244 + 8 - start.size())}}) {
        for (const char* type : {"tEXt", "IDAT", "PLTE", "IEND"}) {
            Bytes data = start;
            data.insert(data.end(), length.begin(), length.end());
            data.insert(data.end(), type, type + 4);
            const Bytes rest = PngBuilder().bytes({1, 2, 3, 0, 0, 0, 0}).IEND();
            data.insert(data.end(), rest.begin() + 8, rest.end());
            expectEveryWay({type, data, nothing});
        }
    }
}

TEST_F(PngContainer, HeaderFieldsOutsideTheirValuesGiveAnImage) {
    constexpr std::uint32_t minus = 0x80000000U;
    const PngImage rows[] = {
        {0, 1, 8, 2},
        {1, 0, 8, 2},
        {minus | 1, 1, 8, 2},
        {1, minus | 1, 8, 2},
        {1, 1, 0, 2},
        {1, 1, 3, 2},
        {1, 1, 32, 2},
        {1, 1, 8, 1},
        {1, 1, 8, 5},
        {1, 1, 8, 7},
        {1, 1, 8, 255},
        {1, 1, 8, 2, 1},
        {1, 1, 8, 2, 0, 1},
        {1, 1, 8, 2, 0, 0, 2},
        {8192, 8192, 8, 2},
        {0x7FFFFFFF, 0x7FFFFFFF, 1, 0},
        {0x7FFFFFFF, 1, 1, 0},
        {1, 67108864, 1, 0},
        // depths that do not suit the colour type
        {1, 1, 1, 2},
        {1, 1, 2, 2},
        {1, 1, 4, 2},
        {1, 1, 16, 3},
        {1, 1, 1, 4},
        {1, 1, 2, 4},
        {1, 1, 4, 4},
        {1, 1, 1, 6},
        {1, 1, 2, 6},
        {1, 1, 4, 6},
    };
    for (const PngImage& image : rows) {
        SCOPED_TRACE(std::to_string(image.width) + " x " + std::to_string(image.height) + ", depth " +
                     std::to_string(image.bitDepth) + ", colour type " + std::to_string(image.colorType));
        expectEveryWay({"header", PngBuilder().IHDR(image).IDAT(zlibStored(Bytes(32))).IEND(), nothing});
    }
}

TEST_F(PngContainer, TheGreatestSizeIsRefused) {
    cPixSheet sheet;
    const PngImage greatest{67108863, 1, 1, 0};
    if (!sheet.InitializeDIB(67108863, 1)) GTEST_SKIP() << "no memory for 256 MB here";
    ASSERT_TRUE(sheet.LoadPicture_Stream(ByteArray(PngBuilder().IHDR(greatest).IDAT(zlibStored({0, 0x40})).IEND())));
    EXPECT_EQ(sheet.Width(), 67108863);
    EXPECT_EQ(sheet.GetPixel(1, 0), 0xFFFFFF);
    EXPECT_EQ(sheet.GetPixel(67108862, 0), 0);
}

TEST_F(PngContainer, ACutPictureLoadsOrTheToleratedByteIsNot) {
    const Bytes whole = PngBuilder().IHDR(rgb).chunk("tRNS", {0, 1, 0, 2, 0, 3}).IDAT(rgbStream, 5).IEND();
    const Loaded expected = onePixel({30, 20, 10, 255}, AlphaSimple);
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        SCOPED_TRACE(size);
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        // In an array the last chunk may end one byte beyond the data.
        const bool loadsFromStream = size + 1 >= whole.size();
        EXPECT_EQ(load(cut), loadsFromStream ? expected : nothing);
        EXPECT_EQ(load(cut, Source::file), size == whole.size() ? expected : nothing);
    }
    // The byte is missing where a slice ends, although the array goes on.
    cPixSheet sheet;
    Bytes longer = whole;
    longer.resize(longer.size() + 50);
    for (const std::size_t missing : {0U, 1U, 2U}) {
        const auto length = static_cast<std::int32_t>(whole.size() - missing);
        EXPECT_EQ(sheet.LoadPicture_Stream(ByteArray(longer), 32, 32, 0, length), missing < 2);
    }
    // A cut CRC is not there, so it is not checked.
    const Bytes cutCrc = PngBuilder().IHDR(rgb).IDAT(rgbStream).chunk("IEND", {1}, Crc::wrong).data();
    EXPECT_EQ(load({cutCrc.begin(), cutCrc.end() - 1}), rgbLoaded);
}

TEST_F(PngContainer, DamagedImageDataIsJudgedOtherwiseWithZlibThanWithout) {
    // Three rows of one pixel.
    const auto picture = [](std::uint8_t colorType, const Bytes& stream) {
        return PngBuilder().IHDR({1, 3, 8, colorType}).chunk("PLTE", {7, 8, 9}).IDAT(stream).IEND();
    };
    const auto rows = [](const Pixel& first, const Pixel& second, const Pixel& third, AlphaTypeEnum alpha) {
        return Loaded{1, 3, {first, second, third}, alpha};
    };
    const auto zlib = [](const StreamWriter& blocks, const Bytes& tail = {}) {
        Bytes stream = {0x78, 0x01};
        stream.insert(stream.end(), blocks.bytes().begin(), blocks.bytes().end());
        stream.insert(stream.end(), tail.begin(), tail.end());
        return stream;
    };
    const Bytes rgbRows = {0, 1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9};
    const Bytes rgbAndMore = {0, 1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 99, 99, 99, 99};
    const Loaded whole = rows({3, 2, 1, 255}, {6, 5, 4, 255}, {9, 8, 7, 255}, AlphaNone);
    const Pixel black = {0, 0, 0, 255};
    const Loaded allBlack = rows(black, black, black, AlphaNone);
    const Bytes oneAndAHalf = {0, 1, 2, 3, 0, 4};
    Bytes wrongAdler = zlibStored(rgbRows);
    wrongAdler.back() ^= 1;
    Bytes noAdler = zlibStored(rgbRows);
    noAdler.resize(noAdler.size() - 4);
    Bytes behind = zlibStored(rgbRows);
    behind.insert(behind.end(), 20, 0xFF);
    const Case cases[] = {
        {"RGB ends within a row", picture(2, zlibStored(oneAndAHalf)),
         rows({3, 2, 1, 255}, {0, 0, 4, 255}, black, AlphaNone)},
        {"RGBA ends within a row", picture(6, zlibStored({0, 1, 2, 3, 255, 0, 4})),
         rows({3, 2, 1, 255}, {0, 0, 0, 0}, {0, 0, 0, 0}, AlphaComplex)},
        {"palette ends early", picture(3, zlibStored({0, 1})), rows(black, {9, 8, 7, 255}, {9, 8, 7, 255}, AlphaNone)},
        {"no final block", picture(2, zlib(StreamWriter().stored(oneAndAHalf))),
         rows({3, 2, 1, 255}, {0, 0, 4, 255}, black, AlphaNone)},
        {"ends within a block", picture(2, zlib(StreamWriter().fixed(true).literal(0).literal(1))),
         rows({0, 0, 1, 255}, black, black, AlphaNone)},
        {"two header bytes alone", picture(2, {0x78, 0x01}), allBlack},
        {"one header byte", picture(2, {0x78}), allBlack},
        {"an empty stream", picture(2, zlibStored({})), allBlack},
        {"more rows than the picture has", picture(2, zlibStored(rgbAndMore)), whole},
        {"bytes behind the stream", picture(2, behind), whole},
        {"fixed codes", picture(2, zlibFixed(rgbRows)), whole},
        {"a wrong Adler-32", picture(2, wrongAdler), whole},
        {"no Adler-32", picture(2, noAdler), whole},
        {"damage behind the last row", picture(2, zlib(StreamWriter().stored(rgbAndMore).bits(6, 3))), whole},
        {"damage before the last row", picture(2, zlib(StreamWriter().stored(oneAndAHalf).bits(6, 3))), nothing},
        {"a length that contradicts its complement", picture(2, {0x78, 0x01, 1, 3, 0, 3, 0, 0, 0, 0}), nothing},
        {"a distance before the start", picture(2, zlib(StreamWriter().fixed(true).literal(0).match(3, 2).end())),
         nothing},
        {"no zlib header", picture(2, {0x79, 0x01, 1, 0, 0, 0xFF, 0xFF}), nothing},
        {"a preset dictionary", picture(2, {0x78, 0x20, 1, 2, 3, 4, 1, 0, 0, 0xFF, 0xFF}), nothing},
        {"not compressed", picture(2, rgbRows), nothing},
    };
    for (const Case& row : cases)
        expectEveryWay(row);
}
