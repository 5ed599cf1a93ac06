#include "platform/files.h"
#include "platform/faults.h"
#include "support/Pictures.h"
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>

using namespace pixkit::platform;
using pixkit::test::TemporaryFolder;

namespace {

// Makes a file and gives its name back.
std::string make(const std::string& name, const std::string& content = "content") {
    const UniqueFile file(CreateFileW(name, FileUse::createAlways));
    std::uint32_t done = 0;
    EXPECT_TRUE(WriteFile(file.get(), content.data(), static_cast<std::uint32_t>(content.size()), done));
    EXPECT_EQ(done, content.size());
    return name;
}

std::string next(Handle file, std::uint32_t count) {
    std::string text(count, '?');
    std::uint32_t done = 99;
    EXPECT_TRUE(ReadFile(file, text.data(), count, done));
    return text.substr(0, done);
}

std::string contentOf(const std::string& name) {
    return next(UniqueFile(CreateFileW(name, FileUse::openExisting)).get(), 1000);
}

} // namespace

TEST(PlatformFiles, NarrowNamesMeanThisFileOrNoneAndWideOnesAlwaysThis) {
    // Narrow code pages lack some of these letters: such a name must fail rather than become "????" or "Z".
    for (const auto name : {u8"plain.bin", u8"grüß 日本.bin", u8"\u2124.bin"}) {
        const TemporaryFolder folder;
        const std::string full = folder.name(name);
        UniqueFile file(CreateFileA(full, FileUse::createAlways));
        const bool made = static_cast<bool>(file);
        EXPECT_EQ(std::filesystem::exists(folder.path(name)), made);
        EXPECT_EQ(GetFileAttributesA(full) != invalidFileAttributes, made);
        EXPECT_EQ(std::filesystem::is_empty(folder.path(u8"")), !made) << "another file was made";
        file.reset();
        EXPECT_EQ(SetFileAttributesA(full, fileAttributeNormal) && DeleteFileA(full), made);
        make(full);
        EXPECT_TRUE(std::filesystem::exists(folder.path(name)));
        EXPECT_TRUE(DeleteFileW(full));
        EXPECT_EQ(GetFileAttributesW(full), invalidFileAttributes);
    }
}

TEST(PlatformFiles, WhatIsNoFileIsRefused) {
    const TemporaryFolder folder;
    const std::string file = make(folder.name(u8"a")), directory = folder.name(u8"");
    for (const std::string& name : {std::string(), file + std::string(1, '\0') + ".bin", file + "/b", directory}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(CreateFileW(name, FileUse::openExisting), invalidHandle);
        EXPECT_EQ(CreateFileA(name, FileUse::openExisting), invalidHandle);
        EXPECT_EQ(CreateFileW(name, FileUse::createAlways), invalidHandle);
        EXPECT_FALSE(DeleteFileW(name) || ReplaceFileW(name, file));
        const std::uint32_t attributes = GetFileAttributesW(name);
        EXPECT_EQ(attributes != invalidFileAttributes && (attributes & fileAttributeDirectory) != 0, name == directory);
        EXPECT_EQ(SetFileAttributesW(name, fileAttributeNormal), name == directory);
    }
    const Handle stale = CreateFileW(file, FileUse::openExisting);
    EXPECT_TRUE(stale != 0 && CloseHandle(stale));
    for (const Handle handle : {Handle{0}, invalidHandle, Handle{0x7FFFFFF0}, stale}) {
        char byte = 'x';
        std::uint32_t done = 99;
        EXPECT_FALSE(ReadFile(handle, &byte, 1, done) || WriteFile(handle, &byte, 1, done));
        EXPECT_EQ(done, 0U);
        EXPECT_FALSE(SetFilePointer(handle, 0) || GetFileSize(handle) >= 0 || CloseHandle(handle)) << handle;
    }
    EXPECT_EQ(contentOf(file), "content");
}

TEST(PlatformFiles, ReplacingLosesAFileOrAnAttribute) {
    const TemporaryFolder folder;
    const std::string from = make(folder.name(u8"from"), "new"), to = make(folder.name(u8"to"), "old");
    {
        const UniqueFile draft(CreateDraftW(from, to));
        EXPECT_FALSE(draft && KeepDraft(draft.get(), from)) << "a draft took the name of a file";
    }
    EXPECT_FALSE(ReplaceFileW(to, folder.name(u8"missing")));
    EXPECT_TRUE(SetFileAttributesW(to, fileAttributeReadonly));
    EXPECT_NE(GetFileAttributesW(to) & fileAttributeReadonly, 0U);
    EXPECT_FALSE(DeleteFileW(to));
    EXPECT_EQ(contentOf(from) + contentOf(to), "newold");
    EXPECT_TRUE(SetFileAttributesW(to, fileAttributeNormal));
    EXPECT_EQ(GetFileAttributesW(to) & fileAttributeReadonly, 0U);
    EXPECT_TRUE(ReplaceFileA(to, from));
    EXPECT_TRUE(ReplaceFileW(from, to)) << "nobody had that name any more";
    EXPECT_EQ(contentOf(from), "new");
    EXPECT_EQ(from.substr(0, folderLength(from)) + "from", from);
    EXPECT_EQ(folderLength("from"), 0U);
    EXPECT_EQ(contentOf(make(from, "x")), "x") << "what was there is still there";
}

TEST(PlatformFiles, ADraftGoesWhereALinkOfItsNameLeads) {
    const TemporaryFolder folder;
    const std::string other = make(folder.name(u8"other")), link = folder.name(u8"link"), to = folder.name(u8"to");
    for (const char* const end : {"other", "nowhere"}) {
        std::error_code noLinks;
        std::filesystem::create_symlink(end, folder.path(u8"link"), noLinks);
        if (noLinks) GTEST_SKIP() << "no links can be made here";
        for (const int vanishing : {0, -1}) {
            armFault(SeamCall::vanishingDraft, 0, vanishing);
            const UniqueFile draft(CreateDraftW(link, to));
            EXPECT_FALSE(draft && KeepDraft(draft.get(), link));
            disarmFaults();
        }
        EXPECT_EQ(contentOf(other), "content");
        EXPECT_FALSE(std::filesystem::exists(folder.path(u8"nowhere")));
        EXPECT_TRUE(std::filesystem::remove(folder.path(u8"link")));
    }
}

TEST(PlatformFiles, AnEndedProcessLeavesItsDraft) {
    // Where the process begins anew to be ended, it finds the folder by this name alone.
    const auto folder = std::filesystem::temp_directory_path() / "pixkit.ended";
    std::filesystem::create_directories(folder);
    const auto write = [&] {
        const Handle draft = CreateDraftW((folder / "draft").string(), (folder / "target").string());
        std::uint32_t done = 0;
        std::_Exit(WriteFile(draft, "bytes", 5, done) && done == 5 ? 7 : 8);
    };
    EXPECT_EXIT(write(), testing::ExitedWithCode(7), "");
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    std::filesystem::remove_all(folder);
}

TEST(PlatformFiles, ReadingMovesOnAndStopsAtTheEnd) {
    const TemporaryFolder folder;
    const std::string name = make(folder.name(u8"read"), "0123456789");
    UniqueFile file(CreateFileW(name, FileUse::openExisting));
    EXPECT_EQ(GetFileSize(file.get()), 10);
    for (const auto& [count, expected] : {std::pair(3U, "012"), {3U, "345"}, {30U, "6789"}, {30U, ""}})
        EXPECT_EQ(next(file.get(), count), expected);
    EXPECT_TRUE(SetFilePointer(file.get(), 8));
    EXPECT_EQ(next(file.get(), 30), "89");
    EXPECT_TRUE(SetFilePointer(file.get(), 0x80000001U)) << "beyond 2 GiB is a place like any other";
    EXPECT_EQ(next(file.get(), 30), "");
    std::uint32_t done = 99;
    char byte = 'x';
    EXPECT_FALSE(WriteFile(file.get(), &byte, 1, done)) << "opened for reading";
    file.reset();
    file.reset(CreateFileW(name, FileUse::createAlways));
    EXPECT_FALSE(ReadFile(file.get(), &byte, 1, done)) << "opened for writing";
}
// SPDX-License-Identifier: MIT
