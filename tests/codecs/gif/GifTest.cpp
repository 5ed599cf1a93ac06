// What becomes of a GIF that is cut, and of pictures that are written and read again. Which files give which pixels,
// and which bytes are written, stands in the ledgers of tests/data.
#include "codecs/gif/cGIFparser.h"
#include "support/QuietLoads.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class GifFiles : public QuietLoads {};

} // namespace

TEST_F(GifFiles, DataThatEndsEarlyIsReadBeyondOrLeavesAPicture) {
    for (const char* name : {"extensions.gif", "table-local-transparent.gif"}) {
        const Bytes whole = picture(std::string("gif/") + name);
        for (std::size_t length = 0; length < whole.size(); ++length) {
            const auto cut = std::make_unique<std::uint8_t[]>(length); // sanitizers watch its end
            std::copy_n(whole.begin(), length, cut.get());
            cPixSheet sheet;
            const ReadResult result = cGIFparser().LoadStream({cut.get(), length}, sheet);
            EXPECT_EQ(static_cast<bool>(result), length == whole.size() - 1)
                << "only the trailer is not needed: " << length;
        }
    }
}

// Too small to fill a table of strings: Wine's loader errs at some that are kept full, which giflib, netpbm and
// ImageMagick read. LzwTest has full ones.
TEST_F(GifFiles, OurReaderFindsOtherPixelsThanWereWritten) {
    for (const unsigned colors : {1U, 2U, 3U, 4U, 5U, 16U, 17U, 128U, 255U, 256U}) {
        for (const bool hasHole : {false, true}) {
            if (colors == 256 && hasHole) continue;
            std::vector<Pixel> pixels;
            for (unsigned i = 0; i < 61 * 50; ++i) {
                const auto color = static_cast<std::uint8_t>((i * i / 7 + i) % colors);
                pixels.push_back({color, static_cast<std::uint8_t>(255 - color), 7, 255});
                if (hasHole && i % 9 == 0) pixels.back() = Pixel{};
            }
            cPixSheet sheet, again;
            fill(sheet, 61, 50, pixels);
            ByteArray file;
            EXPECT_TRUE(sheet.SaveToStream_GIF(file));
            EXPECT_TRUE(again.LoadPicture_Stream(file));
            EXPECT_EQ(again.ImageType(), imgGIF);
            EXPECT_TRUE(pixelsOf(again) == pixels) << colors << hasHole;
        }
    }
}
