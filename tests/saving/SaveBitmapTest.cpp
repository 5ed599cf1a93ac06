#include "diagnostics/guard.h"
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/interaction.h"
#include "support/AllocationFault.h"
#include "support/Pictures.h"
#include <functional>
#include <gtest/gtest.h>

namespace pixkit {
namespace {

using platform::ScopedFault;
using platform::SeamCall;
using test::fill;
using test::Pixel;
using Bytes = std::vector<std::uint8_t>;

// Answers every box with one answer and remembers what was asked.
class BoxAnswers {
  public:
    explicit BoxAnswers(int answer) {
        platform::setMessageBoxHandler([this, answer](const std::string& text, const std::string& caption, auto style) {
            asked.push_back(text + "|" + caption + "|" + std::to_string(style));
            return answer;
        });
    }
    ~BoxAnswers() { platform::setMessageBoxHandler({}); }
    BoxAnswers(const BoxAnswers&) = delete;
    BoxAnswers& operator=(const BoxAnswers&) = delete;
    std::vector<std::string> asked;
};

Bytes bmp(std::uint8_t width, std::uint8_t height, std::uint8_t bits, const Bytes& rows) {
    const auto size = static_cast<std::uint8_t>(rows.size());
    Bytes file = {'B',   'M',    static_cast<std::uint8_t>(size + 54),
                  0,     0,      0,
                  0,     0,      0,
                  0,     54,     0,
                  0,     0,      40,
                  0,     0,      0,
                  width, 0,      0,
                  0,     height, 0,
                  0,     0,      1,
                  0,     bits,   0,
                  0,     0,      0,
                  0,     size,   0,
                  0,     0};
    file.resize(54);
    file.insert(file.end(), rows.begin(), rows.end());
    return file;
}

TEST(SaveBitmap, WritesTheBytesOfTheFormat) {
    const std::vector<Pixel> opaque = {{1, 2, 3, 255}, {4, 5, 6, 255}};
    const std::vector<Pixel> translucent = {{64, 32, 16, 128}, {0, 0, 0, 0}};
    struct Row {
        const char* what;
        std::vector<Pixel> pixels; // one column, top row first
        bool keepAlpha;
        std::int32_t fillColour;
        Bytes expected;
    };
    const Row rows[] = {
        {"opaque, padded", opaque, false, 0, bmp(1, 2, 24, {4, 5, 6, 0, 1, 2, 3, 0})},
        {"opaque, although alpha was to be kept", opaque, true, 0, bmp(1, 2, 24, {4, 5, 6, 0, 1, 2, 3, 0})},
        {"alpha kept", translucent, true, 0, bmp(1, 2, 32, {0, 0, 0, 0, 64, 32, 16, 128})},
        {"flattened onto black", translucent, false, 0, bmp(1, 2, 24, {0, 0, 0, 0, 64, 32, 16, 0})},
        {"flattened onto a colour", translucent, false, 0x0A6480, bmp(1, 2, 24, {10, 100, 128, 0, 68, 81, 79, 0})},
        {"alpha all 0 counts as no alpha",
         {{1, 2, 3, 0}, {4, 5, 6, 0}},
         true,
         0,
         bmp(1, 2, 24, {4, 5, 6, 0, 1, 2, 3, 0})},
    };
    const test::TemporaryFolder folder;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        cPixSheet sheet;
        fill(sheet, 1, 2, row.pixels);
        ByteArray stream;
        ASSERT_TRUE(sheet.SaveToStream_Bitmap(stream, row.keepAlpha, row.fillColour));
        EXPECT_EQ(test::bytesOf(stream), row.expected);
        EXPECT_EQ(stream.dimensions(), 1);
        ASSERT_TRUE(sheet.SaveToFile_Bitmap(folder.name(u8"größe 图.bmp"), row.keepAlpha, row.fillColour, false));
        EXPECT_EQ(test::readFile(folder.path(u8"größe 图.bmp")), row.expected);
        EXPECT_EQ(test::pixelsOf(sheet), row.pixels) << "saving must not touch the image";
    }
    cPixSheet wide;
    wide.InitializeDIB(5, 1);
    ByteArray stream;
    ASSERT_TRUE(wide.SaveToStream_Bitmap(stream));
    EXPECT_EQ(stream.size(), 54U + 16U);
}

TEST(SaveBitmap, AsksBeforeItOverwritesAndANoLeavesTheFile) {
    const test::TemporaryFolder folder;
    const auto name = folder.name(u8"picture.bmp");
    const auto path = folder.path(u8"picture.bmp");
    const Bytes old = {1, 2, 3};
    cPixSheet sheet;
    fill(sheet, 1, 1, {{1, 2, 3, 255}});

    test::writeFile(path, old);
    {
        const BoxAnswers no(platform::answerNo);
        EXPECT_FALSE(sheet.SaveToFile_Bitmap(name));
        EXPECT_EQ(no.asked, std::vector<std::string>{"Overwrite existing file?|Overwrite Confirmation|292"});
        EXPECT_EQ(test::readFile(path), old);
        EXPECT_FALSE(cPixSheet().SaveToFile_Bitmap(name, false, 0, false)) << "an empty instance touches nothing";
        EXPECT_EQ(test::readFile(path), old);
    }
    {
        const BoxAnswers yes(platform::answerYes);
        std::filesystem::permissions(path, std::filesystem::perms::owner_read);
        EXPECT_TRUE(sheet.SaveToFile_Bitmap(name)) << "read-only files are replaced too";
        EXPECT_EQ(test::readFile(path).size(), 58U);
        EXPECT_TRUE(sheet.SaveToFile_Bitmap(name, false, 0, false));
        EXPECT_TRUE(sheet.SaveToFile_Bitmap(folder.name(u8"new.bmp")));
        EXPECT_EQ(yes.asked.size(), 1U) << "neither PromptOverWrite False nor a new file asks";
        EXPECT_FALSE(sheet.SaveToFile_Bitmap(folder.name(u8""))) << "a directory exists and is not replaced";
        EXPECT_FALSE(sheet.SaveToFile_Bitmap(""));
        EXPECT_FALSE(sheet.SaveToFile_Bitmap(folder.name(u8"no such folder/picture.bmp")));
    }
}

// Every writer: read-only folder, no second handle, full disk, old file that cannot be made writable, old file in use,
// no memory.
TEST(SaveFile, AFailureOfAnyWriterCostsTheOldFileOrGoesUnreported) {
    const test::TemporaryFolder folder;
    const Bytes old = {1, 2, 3};
    cPixSheet sheet;
    fill(sheet, 1, 1, {{1, 2, 3, 128}});
    const auto filesThere = [&] { return std::distance(std::filesystem::directory_iterator(folder.path(u8"")), {}); };
    const std::pair<SeamCall, int> failures[] = {
        {SeamCall::createFile, 0},        {SeamCall::writeFile, 0}, {SeamCall::writeFile, 1},
        {SeamCall::setFileAttributes, 0}, {SeamCall::moveFile, 0},
    };
    const std::pair<const char8_t*, std::function<bool(const std::string&)>> writers[] = {
        {u8"a.bmp", [&](auto& name) { return sheet.SaveToFile_Bitmap(name, false, 0, false); }},
        {u8"a.gif", [&](auto& name) { return sheet.SaveToFile_GIF(name, true, 128, false); }},
        {u8"a.jpg", [&](auto& name) { return sheet.SaveToFile_JPG(name, 70, 0, false); }},
        {u8"a.png", [&](auto& name) { return sheet.SaveToFile_PNG(name, false); }},
        {u8"a.tga", [&](auto& name) { return sheet.SaveToFile_TGA(name, false, false, false, false); }},
        {u8"a.ico", [&](auto& name) { return sheet.SaveToFile_ICO(name, {}, false) != 0; }},
    };
    setErrorReportHandler([](const ErrorReport&) {}); // nothing to be told here
    for (const auto& [file, save] : writers) {
        const auto name = folder.name(file);
        const auto path = folder.path(file);
        SCOPED_TRACE(name);
        EXPECT_FALSE(save(folder.name(u8""))) << "a directory is not replaced";
        for (const auto& [call, after] : failures) {
            if (call == SeamCall::writeFile && after == 1 && !name.ends_with(".bmp")) continue; // written in one go
            SCOPED_TRACE(static_cast<int>(call));
            test::writeFile(path, old);
            std::filesystem::permissions(path, std::filesystem::perms::owner_read);
            {
                const ScopedFault fault(call, after, 1); // once: what follows a failure must not mend it
                EXPECT_FALSE(save(name));
            }
            EXPECT_EQ(test::readFile(path), old);
            EXPECT_NE(platform::GetFileAttributesW(name) & platform::fileAttributeReadonly, 0U);
            EXPECT_EQ(filesThere(), 1) << "the half-written file was left behind";
            EXPECT_TRUE(save(name)) << "no handle may be left open";
        }
        long after = 0;
        for (bool hasFailed = true; hasFailed; ++after) {
            ASSERT_LT(after, 200);
            test::writeFile(path, old);
            bool isSaved = false; // some can be done without, such as a question about the old file
            {
                const test::AllocationFault fault(after);
                isSaved = save(name);
                hasFailed = fault.hasHappened();
            }
            EXPECT_TRUE(isSaved || hasFailed);
            EXPECT_EQ(test::readFile(path) == old, !isSaved) << after;
            EXPECT_EQ(filesThere(), 1) << after;
        }
        EXPECT_GT(after, 3);
        std::filesystem::remove(path);
    }
    setErrorReportHandler({});
}

TEST(SaveBitmap, AFileInUseOrSomebodyElsesIsNotLost) {
    const test::TemporaryFolder folder;
    const auto name = folder.name(u8"picture.bmp");
    const auto path = folder.path(u8"picture.bmp");
    const Bytes old = {1, 2, 3};
    cPixSheet sheet;
    fill(sheet, 1, 1, {{1, 2, 3, 255}});
    const auto filesThere = [&] { return std::distance(std::filesystem::directory_iterator(folder.path(u8"")), {}); };
    test::writeFile(path, old);
    test::writeFile(folder.path(u8"~pixkit0.bmp"), old); // somebody else's
    {
        // In use: Windows does not let such a file go, other systems do.
        const platform::UniqueFile reader(platform::CreateFileW(name, platform::FileUse::openExisting));
        if (!sheet.SaveToFile_Bitmap(name, false, 0, false)) {
            EXPECT_EQ(test::readFile(path), old);
        }
    }
    EXPECT_TRUE(sheet.SaveToFile_Bitmap(name, false, 0, false));
    EXPECT_EQ(test::readFile(path).size(), 58U);
    EXPECT_EQ(test::readFile(folder.path(u8"~pixkit0.bmp")), old);
    EXPECT_EQ(filesThere(), 2);
}

} // namespace
} // namespace pixkit
