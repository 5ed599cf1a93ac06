// What becomes of a GIF that is cut or whose load fails, and of pictures that are written and read again. Which files
// give which pixels, and which bytes are written, stands in the ledgers of tests/data.
#include "codecs/gif/cGIFparser.h"
#include "platform/faults.h"
#include "support/AllocationFault.h"
#include "support/QuietLoads.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class GifFiles : public QuietLoads {};

Bytes picture(const char* name) {
    return readFile(sourceFolder() / "tests" / "data" / "pictures" / "gif" / name);
}

} // namespace

TEST_F(GifFiles, DataThatEndsEarlyIsReadBeyondOrLeavesAPicture) {
    for (const char* name : {"extensions.gif", "table-local-transparent.gif"}) {
        const Bytes whole = picture(name);
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

TEST_F(GifFiles, AFailureOfTheSystemLeavesHalfAPicture) {
    using platform::SeamCall;
    for (const char* name : {"table-local.gif", "transparent-1.gif"}) {
        const ByteArray array(picture(name));
        cPixSheet whole;
        ASSERT_TRUE(whole.LoadPicture_Stream(array));
        for (const SeamCall call :
             {SeamCall::oleLoadPicture, SeamCall::getObject, SeamCall::createDIBSection, SeamCall::getDIBits,
              SeamCall::renderPicture, SeamCall::createCompatibleDC, SeamCall::selectObject}) {
            SCOPED_TRACE(std::string(name) + ", call " + std::to_string(static_cast<int>(call)));
            cPixSheet sheet;
            bool loaded = false;
            {
                const platform::ScopedFault fault(call);
                loaded = sheet.LoadPicture_Stream(array);
            }
            EXPECT_EQ(pixelsOf(sheet), loaded ? pixelsOf(whole) : std::vector<Pixel>());
            EXPECT_TRUE(sheet.LoadPicture_Stream(array)) << "not usable afterwards";
        }
        bool happened = true;
        for (long after = 0; happened; ++after) {
            cPixSheet sheet;
            const auto open = platform::openHandles();
            {
                const AllocationFault fault(after, -1);
                const bool loaded = sheet.LoadPicture_Stream(array);
                EXPECT_EQ(sheet.Handle() != 0, loaded);
                happened = fault.hasHappened();
            }
            sheet.DestroyDIB();
            EXPECT_EQ(platform::openHandles(), open);
            ASSERT_LT(after, 1000);
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

TEST_F(GifFiles, AFailedSaveSaysTrueOrSpoilsTheArray) {
    cPixSheet sheet, empty, wide;
    fill(sheet, 300, 1, std::vector<Pixel>(300, Pixel{0, 50, 0, 128}));
    ASSERT_TRUE(wide.InitializeDIB(65536, 1));
    ByteArray kept(Bytes{1, 2, 3});
    EXPECT_FALSE(empty.SaveToStream_GIF(kept));
    EXPECT_FALSE(wide.SaveToStream_GIF(kept));
    for (long after = 0; after < 500; ++after) {
        EXPECT_EQ(bytesOf(kept), (Bytes{1, 2, 3}));
        const AllocationFault fault(after);
        if (sheet.SaveToStream_GIF(kept)) return;
        expectedReports.emplace_back("SaveToStream_GIF");
    }
    FAIL() << "saves never succeed";
}
