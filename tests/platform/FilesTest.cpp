#include "platform/files.h"
#include "platform/faults.h"
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

using namespace pixkit::platform;

namespace {

std::string utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

// A folder of its own for each test, removed at its end.
class PlatformFiles : public testing::Test {
  protected:
    PlatformFiles() {
        const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        m_folder = std::filesystem::temp_directory_path() / ("pixkit-platform-" + name);
        std::filesystem::remove_all(m_folder);
        std::filesystem::create_directories(m_folder);
    }
    ~PlatformFiles() override {
        disarmFaults();
        std::error_code ignored;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder, ignored))
            SetFileAttributesW(utf8(entry.path()), fileAttributeNormal);
        std::filesystem::remove_all(m_folder, ignored);
    }

    std::string in(const std::string& name) const { return utf8(m_folder) + "/" + name; }
    std::string folder() const { return utf8(m_folder); }
    std::ptrdiff_t entries() const {
        return std::distance(std::filesystem::directory_iterator(m_folder), std::filesystem::directory_iterator());
    }

    std::string make(const std::string& name, const std::string& content = "content") const {
        const UniqueFile file(CreateFileW(in(name), FileUse::createAlways));
        std::uint32_t done = 0;
        EXPECT_TRUE(WriteFile(file.get(), content.data(), static_cast<std::uint32_t>(content.size()), done));
        EXPECT_EQ(done, content.size());
        return in(name);
    }

    std::string contentOf(const std::string& path) const {
        const UniqueFile file(CreateFileW(path, FileUse::openExisting));
        std::string content(1000, '?');
        std::uint32_t done = 0;
        EXPECT_TRUE(ReadFile(file.get(), content.data(), 1000, done));
        content.resize(done);
        return content;
    }

  private:
    std::filesystem::path m_folder;
};

} // namespace

TEST_F(PlatformFiles, NonAsciiNamesKeepTheirCharacters) {
    const std::string name = "gr\xC3\xBC\xC3\x9F \xE6\x97\xA5\xE6\x9C\xAC.bin"; // German and Japanese letters
    const std::string path = make(name, "seven b");
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(std::u8string(path.begin(), path.end()))));
    EXPECT_EQ(contentOf(path), "seven b");
    EXPECT_TRUE(DeleteFileW(path));
    EXPECT_EQ(GetFileAttributesW(path), invalidFileAttributes);
}

TEST_F(PlatformFiles, NarrowNamesMeanThisFileOrNone) {
    // Narrow code pages lack these letters: such a name must fail rather than become "????" or "Z".
    for (const std::string name : {"plain.bin", "\xE6\x97\xA5\xE6\x9C\xAC.bin", "\xE2\x84\xA4.bin"}) {
        SCOPED_TRACE(name);
        UniqueFile file(CreateFileA(in(name), FileUse::createAlways));
        EXPECT_EQ(GetFileAttributesW(in(name)) != invalidFileAttributes, static_cast<bool>(file));
        EXPECT_EQ(GetFileAttributesA(in(name)) != invalidFileAttributes, static_cast<bool>(file));
        EXPECT_EQ(entries(), file ? 1 : 0);
        const bool made = static_cast<bool>(file);
        file.reset();
        EXPECT_EQ(SetFileAttributesA(in(name), fileAttributeNormal), made);
        EXPECT_EQ(DeleteFileA(in(name)), made);
    }
}

TEST_F(PlatformFiles, NamesThatAreNoneFail) {
    make("a");
    const std::string cut = in("a") + std::string(1, '\0') + ".bin";
    for (const std::string& name : {std::string(), cut, in("missing/file"), in("missing")}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(CreateFileW(name, FileUse::openExisting), invalidHandle);
        EXPECT_EQ(CreateFileA(name, FileUse::openExisting), invalidHandle);
        EXPECT_EQ(GetFileAttributesW(name), invalidFileAttributes);
        EXPECT_FALSE(SetFileAttributesW(name, fileAttributeNormal));
        EXPECT_FALSE(DeleteFileW(name));
    }
    EXPECT_EQ(CreateFileW(cut, FileUse::createAlways), invalidHandle);
    EXPECT_EQ(CreateFileW(in("missing/file"), FileUse::createAlways), invalidHandle);
    EXPECT_EQ(entries(), 1);
}

TEST_F(PlatformFiles, ADirectoryIsNoFile) {
    EXPECT_EQ(CreateFileW(folder(), FileUse::openExisting), invalidHandle);
    EXPECT_EQ(CreateFileW(folder(), FileUse::createAlways), invalidHandle);
    EXPECT_NE(GetFileAttributesW(folder()) & fileAttributeDirectory, 0U);
    EXPECT_FALSE(DeleteFileW(folder()));
    EXPECT_TRUE(std::filesystem::is_directory(folder()));
}

TEST_F(PlatformFiles, ReadOnlyProtectsFromDeletingUntilItIsCleared) {
    const std::string path = make("kept.bin");
    EXPECT_EQ(GetFileAttributesW(path) & (fileAttributeReadonly | fileAttributeDirectory), 0U);
    ASSERT_TRUE(SetFileAttributesW(path, fileAttributeReadonly));
    EXPECT_NE(GetFileAttributesW(path) & fileAttributeReadonly, 0U);
    EXPECT_FALSE(DeleteFileW(path));
    EXPECT_EQ(contentOf(path), "content");
    ASSERT_TRUE(SetFileAttributesW(path, fileAttributeNormal));
    EXPECT_TRUE(DeleteFileW(path));
}

TEST_F(PlatformFiles, MovingReplacesADirectoryOrLosesAFile) {
    const std::string from = make("from.bin", "new"), to = make("to.bin", "old");
    EXPECT_EQ(CreateFileW(to, FileUse::createNew), invalidHandle);
    EXPECT_FALSE(MoveFileExW(from, folder()));
    EXPECT_FALSE(MoveFileExW(in("missing"), to));
    {
        const ScopedFault fault(SeamCall::moveFile);
        EXPECT_FALSE(MoveFileExW(from, to));
        EXPECT_FALSE(MoveFileExA(from, to));
    }
    EXPECT_EQ(contentOf(from) + contentOf(to), "newold");
    EXPECT_TRUE(MoveFileExA(from, to));
    EXPECT_TRUE(MoveFileExW(to, from)) << "nobody had that name any more";
    EXPECT_EQ(contentOf(from), "new");
    EXPECT_EQ(entries(), 1);
    EXPECT_EQ(from.substr(0, folderLength(from)) + "from.bin", from);
    EXPECT_EQ(folderLength("from.bin"), 0U);
}

TEST_F(PlatformFiles, ReadingMovesOnAndStopsAtTheEnd) {
    const std::string path = make("read.bin", "0123456789");
    const UniqueFile file(CreateFileW(path, FileUse::openExisting));
    EXPECT_EQ(GetFileSize(file.get()), 10);
    const auto next = [&](std::uint32_t count) {
        std::string text(count, '?');
        std::uint32_t done = 99;
        EXPECT_TRUE(ReadFile(file.get(), text.data(), count, done));
        return text.substr(0, done);
    };
    EXPECT_EQ(next(3), "012");
    EXPECT_EQ(next(3), "345");
    EXPECT_EQ(next(30), "6789");
    EXPECT_EQ(next(30), "") << "at the end: a success of no bytes";
    EXPECT_TRUE(SetFilePointer(file.get(), 8));
    EXPECT_EQ(next(30), "89");
    EXPECT_TRUE(SetFilePointer(file.get(), 0x80000001U)) << "beyond 2 GiB is a place like any other";
    EXPECT_EQ(next(30), "");
}

TEST_F(PlatformFiles, CreatingEmptiesWhatWasThere) {
    make("twice.bin", "long content");
    EXPECT_EQ(contentOf(make("twice.bin", "short")), "short");
}

TEST_F(PlatformFiles, HandlesOnlyDoWhatTheyWereOpenedFor) {
    const std::string path = make("mode.bin");
    std::uint32_t done = 99;
    char byte = 'x';
    {
        const UniqueFile reader(CreateFileW(path, FileUse::openExisting));
        EXPECT_FALSE(WriteFile(reader.get(), &byte, 1, done));
        EXPECT_EQ(done, 0U);
    }
    const UniqueFile writer(CreateFileW(path, FileUse::createAlways));
    EXPECT_FALSE(ReadFile(writer.get(), &byte, 1, done));
}

TEST_F(PlatformFiles, HandlesThatAreNoFilesFailEverywhere) {
    const Handle stale = CreateFileW(make("stale.bin"), FileUse::openExisting);
    ASSERT_NE(stale, invalidHandle);
    EXPECT_NE(stale, 0);
    EXPECT_TRUE(CloseHandle(stale));
    for (const Handle handle : {Handle{0}, invalidHandle, Handle{0x7FFFFFF0}, stale}) {
        SCOPED_TRACE(handle);
        char byte = 'x';
        std::uint32_t done = 99;
        EXPECT_FALSE(ReadFile(handle, &byte, 1, done));
        EXPECT_EQ(done, 0U);
        EXPECT_FALSE(WriteFile(handle, &byte, 1, done));
        EXPECT_FALSE(SetFilePointer(handle, 0));
        EXPECT_LT(GetFileSize(handle), 0);
        EXPECT_FALSE(CloseHandle(handle));
    }
}

TEST_F(PlatformFiles, FaultsReachEachCall) {
    const std::string path = make("fault.bin", "0123456789");
    {
        const ScopedFault fault(SeamCall::createFile);
        EXPECT_EQ(CreateFileW(path, FileUse::openExisting), invalidHandle);
        EXPECT_EQ(CreateFileA(path, FileUse::openExisting), invalidHandle);
    }
    {
        const UniqueFile file(CreateFileW(path, FileUse::openExisting));
        char byte = 0;
        std::uint32_t done = 99;
        armFault(SeamCall::readFile);
        armFault(SeamCall::setFilePointer);
        armFault(SeamCall::getFileSize);
        EXPECT_FALSE(ReadFile(file.get(), &byte, 1, done));
        EXPECT_FALSE(SetFilePointer(file.get(), 0));
        EXPECT_LT(GetFileSize(file.get()), 0);
        disarmFaults();
    }
    armFault(SeamCall::getFileAttributes);
    armFault(SeamCall::setFileAttributes);
    armFault(SeamCall::deleteFile);
    EXPECT_EQ(GetFileAttributesW(path), invalidFileAttributes);
    EXPECT_EQ(GetFileAttributesA(path), invalidFileAttributes);
    EXPECT_FALSE(SetFileAttributesW(path, fileAttributeNormal));
    EXPECT_FALSE(DeleteFileW(path));
    disarmFaults();
    EXPECT_EQ(contentOf(path), "0123456789");
}

TEST_F(PlatformFiles, AFullDiskTakesHalfOfAWrite) {
    std::uint32_t done = 0;
    {
        const UniqueFile file(CreateFileW(in("half.bin"), FileUse::createAlways));
        const ScopedFault fault(SeamCall::writeFile, 1, 1);
        EXPECT_TRUE(WriteFile(file.get(), "0123", 4, done));
        EXPECT_TRUE(WriteFile(file.get(), "456789", 6, done));
        EXPECT_EQ(done, 3U);
    }
    EXPECT_EQ(contentOf(in("half.bin")), "0123456");
}
