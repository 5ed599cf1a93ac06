// Every allocation of a load fails once, alone and with all that follow it.
#include "support/AllocationFault.h"
#include "support/PngLoading.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

int boxes = 0;

class OutOfMemory : public testing::Test {
  protected:
    OutOfMemory() {
        boxes = 0;
        platform::setMessageBoxHandler([](const std::string&, const std::string&, std::uint32_t) {
            ++boxes;
            return platform::answerOk;
        });
    }
    ~OutOfMemory() override { platform::setMessageBoxHandler({}); }
};

} // namespace

TEST_F(OutOfMemory, AFailedAllocationLeaksOrLeavesHalfAPicture) {
    const TemporaryFolder folder;
    const PngImage image{5, 3, 4, 3};
    const Bytes stream = zlibStored(filteredRows(image, noise(1)));
    const auto picture = [&](std::size_t pieceSize) {
        return PngBuilder()
            .IHDR(image)
            .chunk("PLTE", Bytes(48, 200))
            .chunk("tRNS", Bytes(8, 99))
            .IDAT(stream, pieceSize)
            .IEND();
    };
    const ByteArray onePiece(picture(0)), manyPieces(picture(3));
    writeFile(folder.path(u8"a.png"), picture(3));
    const std::string name = folder.name(u8"a.png");

    const struct {
        const char* name;
        bool (*load)(cPixSheet& sheet, const ByteArray& array, const std::string& name);
        const ByteArray& array;
        bool mustFail; // whether an allocation is made on every system that the load cannot do without
        bool speaks;   // whether the failure of one is an unexpected error, told in a message box
    } rows[] = {
        {"array, one IDAT", [](auto& sheet, auto& array, auto&) { return sheet.LoadPicture_Stream(array); }, onePiece,
         false, false},
        {"array, many IDATs", [](auto& sheet, auto& array, auto&) { return sheet.LoadPicture_Stream(array); },
         manyPieces, true, false},
        {"array, kept",
         [](auto& sheet, auto& array, auto&) { return sheet.LoadPicture_Stream(array, 0, 0, 0, 0, true); }, onePiece,
         true, false},
        {"file", [](auto& sheet, auto&, auto& file) { return sheet.LoadPicture_File(file); }, onePiece, true, true},
        {"file, kept", [](auto& sheet, auto&, auto& file) { return sheet.LoadPicture_File(file, 0, 0, true); },
         onePiece, true, true},
        {"original format",
         [](auto& sheet, auto& array, auto&) {
             sheet.LoadPicture_Stream(array, 0, 0, 0, 0, true);
             return sheet.LoadPicture_FromOrignalFormat();
         },
         onePiece, true, false},
    };
    for (const auto& row : rows) {
        for (const long times : {1L, -1L}) {
            SCOPED_TRACE(std::string(row.name) + (times < 0 ? ", all that follow fail too" : ""));
            cPixSheet warm; // what is made once per process is there after this
            ASSERT_TRUE(row.load(warm, row.array, name));
            const auto expected = pixelsOf(warm);
            bool hasFailed = false;
            boxes = 0;
            for (long after = 0;; ++after) {
                const auto handles = platform::openHandles();
                const auto live = liveAllocations();
                bool happened = false;
                {
                    cPixSheet sheet;
                    sheet.InitializeDIB(2, 2);
                    bool loaded = false;
                    {
                        const AllocationFault fault(after, times);
                        loaded = row.load(sheet, row.array, name);
                        happened = fault.hasHappened();
                    }
                    if (loaded) {
                        // Nothing failed, or something that there is a way around, such as zlib.
                        EXPECT_EQ(pixelsOf(sheet), expected) << after;
                    } else {
                        EXPECT_TRUE(happened) << after;
                        EXPECT_EQ(contentOf(sheet, false).pixels.size(), 0U) << after;
                        EXPECT_TRUE(row.load(sheet, row.array, name)) << "not usable after failure " << after;
                        hasFailed = true;
                    }
                }
                EXPECT_EQ(liveAllocations(), live) << after;
                EXPECT_EQ(platform::openHandles(), handles) << after;
                if (!happened) break;
                ASSERT_LT(after, 1000);
            }
            EXPECT_TRUE(hasFailed || !row.mustFail);
            EXPECT_EQ(boxes > 0, row.speaks);
        }
    }
}
