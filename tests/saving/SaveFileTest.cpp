// Which files a save may touch, and whom it asks; the plain cases stand in tests/data/transcripts/saving.txt.
#include "platform/files.h"
#include "platform/interaction.h"
#include "support/Pictures.h"

using namespace pixkit;
using namespace pixkit::test;

TEST(SaveFile, AFileInUseOrSomebodyElsesIsLostOrAQuestionIsVain) {
    const TemporaryFolder folder;
    const auto name = folder.name(u8"picture.bmp");
    const auto path = folder.path(u8"picture.bmp");
    const Bytes old = {1, 2, 3};
    std::vector<std::string> asked;
    platform::setMessageBoxHandler([&](const std::string&, const std::string& caption, auto style) {
        asked.push_back(caption + "|" + std::to_string(style));
        return platform::answerYes;
    });
    cPixSheet sheet;
    fill(sheet, 1, 1, {{1, 2, 3, 255}});
    writeFile(path, old);
    writeFile(folder.path(u8"~pixkit0.bmp"), old); // somebody else's
    EXPECT_FALSE(cPixSheet().SaveToFile_Bitmap(name)) << "an empty instance touches nothing, and asks nobody";
    const cPixSheet* const sources[] = {&sheet};
    EXPECT_EQ(cPixSheet().SaveToFile_ICO(name, sources, true), 0);
    EXPECT_TRUE(asked.empty());
    EXPECT_EQ(sheet.SaveToFile_ICO(name, {}, true, std::vector<IconEntrySize>{{16, 16, 99}}), 0);
    EXPECT_EQ(asked, std::vector<std::string>{"Overwrite Confirmation|292"}) << "before sizes are looked at";
    EXPECT_EQ(readFile(path), old);
    asked.clear();
    {
        // In use: Windows does not let such a file go, other systems do.
        const platform::UniqueFile reader(platform::CreateFileW(name, platform::FileUse::openExisting));
        const bool isSaved = sheet.SaveToFile_Bitmap(name, false, 0, false);
        EXPECT_EQ(readFile(path) != old, isSaved);
    }
    EXPECT_FALSE(sheet.SaveToFile_Bitmap(folder.name(u8""))) << "a directory exists and is not replaced";
    EXPECT_FALSE(sheet.SaveToFile_Bitmap("") || sheet.SaveToFile_Bitmap(folder.name(u8"missing/picture.bmp")));
    EXPECT_EQ(asked, std::vector<std::string>{"Overwrite Confirmation|292"}) << "about the directory alone";
    EXPECT_EQ(readFile(folder.path(u8"~pixkit0.bmp")), old);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path(u8"")), {}), 2);
    // What a program does while the question is open counts.
    platform::setMessageBoxHandler([&](const auto&...) {
        sheet.DestroyDIB();
        return platform::answerYes;
    });
    EXPECT_FALSE(sheet.SaveToFile_Bitmap(name, true));
    fill(sheet, 1, 1, {{1, 2, 3, 255}});
    EXPECT_EQ(sheet.SaveToFile_ICO(name, {}, true), 0);
    fill(sheet, 1, 1, {{1, 2, 3, 255}});
    platform::setMessageBoxHandler({});
    for (const auto& [icon, type] : {std::pair(u8"a.CUR", 2), {u8"a.ico", 1}, {u8"a.dat", 1}}) {
        EXPECT_EQ(sheet.SaveToFile_ICO(folder.name(icon), {}, false), 1);
        EXPECT_EQ(readFile(folder.path(icon)).at(2), type) << "icon or cursor, by the name";
    }
}
