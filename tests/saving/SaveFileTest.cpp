// Which files a save may touch, and whom it asks; the plain cases stand in tests/data/transcripts/saving.txt.
#include "platform/faults.h"
#include "platform/files.h"
#include "platform/interaction.h"
#include "support/Pictures.h"

using namespace pixkit;
using namespace pixkit::test;
using platform::SeamCall;
namespace fs = std::filesystem;

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
    EXPECT_EQ(std::distance(fs::directory_iterator(folder.path(u8"")), {}), 1);
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
}

TEST(SaveFile, WhatAFileIsGoesWithItsBytes) {
    const TemporaryFolder folder;
    const auto name = folder.name(u8"picture.bmp");
    const auto path = folder.path(u8"picture.bmp"), other = folder.path(u8"other.bmp");
    const Bytes old = {1, 2, 3};
    cPixSheet sheet;
    fill(sheet, 1, 1, {{1, 2, 3, 255}});
    ByteArray good;
    ASSERT_TRUE(sheet.SaveToStream_Bitmap(good));
    const auto isSaved = [&](const std::string& to) { return sheet.SaveToFile_Bitmap(to, false, 0, false); };
    const auto left = [&] { return std::distance(fs::directory_iterator(folder.path(u8"")), {}); };

    writeFile(path, old);
    constexpr std::uint32_t hidden = 2;
    EXPECT_TRUE(platform::SetFileAttributesW(name, platform::fileAttributeReadonly | hidden));
    const auto attributes = platform::GetFileAttributesW(name);
    EXPECT_TRUE(isSaved(name));
    EXPECT_EQ(readFile(path), bytesOf(good));
    EXPECT_EQ(platform::GetFileAttributesW(name), attributes);
    EXPECT_TRUE(platform::SetFileAttributesW(name, platform::fileAttributeNormal));

    // What tells only in the end that bytes are lost, here and where drafts do not vanish by themselves.
    writeFile(path, old);
    for (const SeamCall late : {SeamCall::writeFile, SeamCall::flushFile, SeamCall::keepDraft, SeamCall::closeFile}) {
        for (const int vanishing : {0, -1}) {
            platform::armFault(SeamCall::vanishingDraft, 0, vanishing);
            const platform::ScopedFault fault(late);
            EXPECT_FALSE(isSaved(name));
            EXPECT_EQ(readFile(path), old);
            EXPECT_EQ(left(), 1) << "a draft was left behind";
        }
    }

    // A file of two names is written over in place, once there is room for it.
    fs::create_hard_link(path, other);
    {
        const platform::ScopedFault full(SeamCall::setEndOfFile);
        EXPECT_FALSE(isSaved(name));
        EXPECT_EQ(readFile(path), old);
    }
    for (const Bytes& before : {old, Bytes(1000, 7)}) {
        writeFile(path, before);
        EXPECT_TRUE(isSaved(name));
        EXPECT_EQ(readFile(path), bytesOf(good));
        EXPECT_EQ(readFile(other), bytesOf(good)) << "the other name kept the old picture";
    }

    // Links lead to the file, even to one that is not there yet, in a folder that begins where the link is.
    std::error_code noLinks;
    fs::create_symlink("first.bmp", folder.path(u8"second.bmp"), noLinks);
    if (noLinks) return; // such as where only administrators make them
    fs::create_symlink("picture.bmp", folder.path(u8"first.bmp"));
    for (const auto& before : {old, Bytes()}) {
        fs::remove(path);
        if (!before.empty()) writeFile(path, before);
        EXPECT_TRUE(isSaved(folder.name(u8"second.bmp")));
        EXPECT_EQ(readFile(path), bytesOf(good));
        EXPECT_TRUE(fs::is_symlink(folder.path(u8"first.bmp")) && fs::is_symlink(folder.path(u8"second.bmp")));
    }
    fs::remove(folder.path(u8"first.bmp"));
    fs::create_symlink("second.bmp", folder.path(u8"first.bmp"));
    EXPECT_FALSE(isSaved(folder.name(u8"second.bmp")));
    EXPECT_EQ(sheet.LastErrorText(), "its links lead to one another");
    EXPECT_EQ(left(), 4);
}
// SPDX-License-Identifier: MIT
