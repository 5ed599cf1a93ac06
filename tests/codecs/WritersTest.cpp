// What every writer refuses, and that a save that fails leaves the caller's array as it was. Bytes stand in
// tests/data/written.txt.
#include "support/AllocationFault.h"
#include "support/QuietLoads.h"

using namespace pixkit;
using namespace pixkit::test;

namespace {

class Writers : public QuietLoads {};

struct Writer {
    const char* member;
    std::int32_t widest; // 0: any width
    bool (*save)(const cPixSheet& sheet, ByteArray& out);
};

constexpr Writer writers[] = {
    {"SaveToStream_Bitmap", 0, [](auto& sheet, auto& out) { return sheet.SaveToStream_Bitmap(out, true); }},
    {"SaveToStream_GIF", 65535, [](auto& sheet, auto& out) { return sheet.SaveToStream_GIF(out); }},
    {"SaveToStream_ICO", 65535, [](auto& sheet, auto& out) { return sheet.SaveToStream_ICO(out) == 1; }},
    {"SaveToStream_JPG", 65535, [](auto& sheet, auto& out) { return sheet.SaveToStream_JPG(out); }},
    {"SaveToStream_PNG", 0, [](auto& sheet, auto& out) { return sheet.SaveToStream_PNG(out); }},
    {"SaveToStream_TGA", 65535, [](auto& sheet, auto& out) { return sheet.SaveToStream_TGA(out, true, true, true); }},
};

} // namespace

TEST_F(Writers, ARefusalOrMissingMemorySpoilsTheArray) {
    const Bytes old = {1, 2, 3};
    for (const Writer& writer : writers) {
        SCOPED_TRACE(writer.member);
        ByteArray kept(old);
        cPixSheet sheet;
        EXPECT_FALSE(writer.save(sheet, kept)) << "no image";
        draw(sheet, 65536, 1, AlphaNone, [](auto x, auto) { return Pixel{static_cast<std::uint8_t>(x), 2, 3, 255}; });
        EXPECT_EQ(writer.save(sheet, kept), writer.widest == 0);
        if (writer.widest != 0) {
            EXPECT_EQ(bytesOf(kept), old);
        }
        ASSERT_TRUE(sheet.InitializeDIB(65535, 1));
        EXPECT_TRUE(writer.save(sheet, kept));
        EXPECT_EQ(kept.dimensions(), 1);
        EXPECT_EQ(kept.lowerBound(), 0);
        // All colours, and a clear pixel.
        draw(sheet, 20, 20, AlphaComplex, [](unsigned x, unsigned y) {
            const auto alpha = static_cast<std::uint8_t>(x * 13);
            return Pixel{static_cast<std::uint8_t>(x * y % (alpha + 1U)), 0, 0, alpha};
        });
        sheet.PngPropertySet(pngTitle, std::string(2000, 'x'));
        kept = ByteArray(old);
        long after = 0;
        for (bool isSaved = false; !isSaved; ++after) {
            ASSERT_LT(after, 500);
            {
                const AllocationFault fault(after);
                isSaved = writer.save(sheet, kept);
            }
            if (isSaved) break;
            EXPECT_EQ(bytesOf(kept), old) << after;
            expectedReports.emplace_back(writer.member);
        }
        EXPECT_GT(after, 0);
    }
}
