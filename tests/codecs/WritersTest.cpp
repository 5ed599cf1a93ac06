// What writers refuse. Bytes stand in tests/data/written.txt; every failure of the machine is tests/loading's question.
#include "support/Pictures.h"

using namespace pixkit;
using namespace pixkit::test;

TEST(Writers, APictureIsWrittenThatTheFormatCannotSay) {
    const struct {
        const char* format;
        bool holdsAnySize;
        bool (*save)(const cPixSheet& sheet, ByteArray& out);
    } rows[] = {
        {"BMP", true, [](auto& sheet, auto& out) { return sheet.SaveToStream_Bitmap(out); }},
        {"GIF", false, [](auto& sheet, auto& out) { return sheet.SaveToStream_GIF(out); }},
        {"ICO", false, [](auto& sheet, auto& out) { return sheet.SaveToStream_ICO(out) == 1; }},
        {"JPG", false, [](auto& sheet, auto& out) { return sheet.SaveToStream_JPG(out); }},
        {"PNG", true, [](auto& sheet, auto& out) { return sheet.SaveToStream_PNG(out); }},
        {"TGA", false, [](auto& sheet, auto& out) { return sheet.SaveToStream_TGA(out, true, true); }},
    };
    cPixSheet empty, wide;
    for (const auto& row : rows) {
        ByteArray out;
        EXPECT_FALSE(row.save(empty, out)) << row.format;
        for (const bool isColumn : {false, true}) {
            ASSERT_TRUE(isColumn ? wide.InitializeDIB(1, 65536) : wide.InitializeDIB(65536, 1));
            EXPECT_EQ(row.save(wide, out), row.holdsAnySize) << row.format;
            ASSERT_TRUE(isColumn ? wide.InitializeDIB(1, 65535) : wide.InitializeDIB(65535, 1));
            EXPECT_TRUE(row.save(wide, out)) << row.format;
        }
    }
}
