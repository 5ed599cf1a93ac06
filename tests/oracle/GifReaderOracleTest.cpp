// GIFs of every shape are read as giflib reads them.
#include "oracle/giflibVerdict.h"
#include "support/GifBuilder.h"
#include "support/PngLoading.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

// The first frame alone, which is all that we read.
void expectSameAsGiflib(const Bytes& data, const std::string& what) {
    cPixSheet sheet;
    const bool loaded = sheet.LoadPicture_Stream(ByteArray(data));
    const GifDecoded theirs = decodeGif(data.data(), data.size());
    if (theirs.pictures != 1) return; // animations keep what belongs to each frame elsewhere
    ASSERT_EQ(loaded, theirs.isWhole) << what;
    if (!loaded) return;
    ASSERT_EQ(sheet.ImageType(), imgGIF) << what;
    EXPECT_TRUE(sheet.Width() == theirs.width && sheet.Height() == theirs.height) << what;
    EXPECT_TRUE(pixelsOf(sheet) == theirs.pixels) << what;
}

} // namespace

TEST(GifReaderOracle, PixelsDifferFromGiflibs) {
    std::mt19937 random(11);
    for (int round = 0; round < 400; ++round) {
        const unsigned codeSize = 2 + static_cast<unsigned>(random() % 7);
        const auto colors = std::size_t{1} << codeSize;
        Gif gif{.codeSize = codeSize, .interlaced = random() % 3 == 0};
        gif.width = static_cast<std::uint16_t>(1 + random() % 90);
        gif.height = static_cast<std::uint16_t>(1 + random() % 90);
        // Runs of a few colours, or noise of all.
        const unsigned variety =
            random() % 2 == 0 ? 1 + static_cast<unsigned>(random() % 3) : static_cast<unsigned>(colors);
        std::vector<int> indexes;
        while (indexes.size() < std::size_t{gif.width} * gif.height)
            indexes.push_back(random() % 4 != 0 && !indexes.empty() ? indexes.back()
                                                                    : static_cast<int>(random() % variety));
        gif.codes = lzw(indexes, codeSize, {.clearWhenFull = random() % 2 == 0});
        for (std::size_t i = 0; i < colors * 3; ++i)
            gif.global.push_back(static_cast<std::uint8_t>(random()));
        if (random() % 2 == 0) gif.before = graphicControl(static_cast<int>(random() % colors));
        gif.screenWidth = gif.screenHeight = 200;
        gif.blockSize = 1 + random() % 255;
        expectSameAsGiflib(gif.data(), std::to_string(round));
    }
}
