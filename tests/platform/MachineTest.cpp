// Libraries, message boxes, the system's version and its clock.
#include "platform/faults.h"
#include "platform/interaction.h"
#include "platform/libraries.h"
#include "platform/system.h"
#include <chrono>
#include <ctime>
#include <gtest/gtest.h>
#include <stdexcept>
#include <tuple>
#include <vector>

using namespace pixkit::platform;

TEST(Libraries, ZlibIsFoundUnderItsWindowsNameAndComputes) {
    const UniqueLibrary zlib(LoadLibraryA("zlib1.dll"));
    if (!zlib) GTEST_SKIP() << "no zlib on this machine";
    using Crc32 = unsigned long (*)(unsigned long, const unsigned char*, unsigned);
    const auto crc32 = reinterpret_cast<Crc32>(GetProcAddress(zlib.get(), "crc32"));
    ASSERT_NE(crc32, nullptr);
    const unsigned char text[] = "123456789";
    EXPECT_EQ(crc32(0, text, 9), 0xCBF43926UL) << "the check value of this CRC";
    EXPECT_EQ(GetProcAddress(zlib.get(), "no_such_function"), nullptr);
    EXPECT_EQ(GetProcAddress(zlib.get(), nullptr), nullptr);
}

TEST(Libraries, WhatIsNotThereIsRefused) {
    EXPECT_EQ(LoadLibraryA("pixkit-no-such-library.dll"), 0);
    EXPECT_EQ(LoadLibraryA(""), 0);
    EXPECT_EQ(LoadLibraryA(nullptr), 0);
}

TEST(Libraries, HandlesThatAreNoLibrariesFail) {
    int local = 0;
    for (const Handle handle : {Handle{0}, Handle{16}, reinterpret_cast<Handle>(&local)}) {
        EXPECT_EQ(GetProcAddress(handle, "crc32"), nullptr);
        EXPECT_FALSE(FreeLibrary(handle));
    }
}

TEST(Libraries, FaultsReachEachCall) {
    const UniqueLibrary zlib(LoadLibraryA("zlib1.dll"));
    {
        const ScopedFault fault(SeamCall::getProcAddress);
        EXPECT_EQ(GetProcAddress(zlib.get(), "crc32"), nullptr);
    }
    const ScopedFault fault(SeamCall::loadLibrary);
    EXPECT_EQ(LoadLibraryA("zlib1.dll"), 0);
}

namespace {
class MessageBoxes : public testing::Test {
  protected:
    ~MessageBoxes() override { setMessageBoxHandler({}); }
};
} // namespace

TEST_F(MessageBoxes, TheHandlerIsAskedAndAnswers) {
    std::vector<std::tuple<std::string, std::string, std::uint32_t>> asked;
    setMessageBoxHandler([&](const std::string& text, const std::string& caption, std::uint32_t style) {
        asked.emplace_back(text, caption, style);
        return answerYes;
    });
    EXPECT_EQ(MessageBoxW("Overwrite?", "Gr\xC3\xBC\xC3\x9F", messageBoxYesNoQuestionDefaultNo), answerYes);
    ASSERT_EQ(asked.size(), 1U);
    EXPECT_EQ(asked[0], std::tuple("Overwrite?", "Gr\xC3\xBC\xC3\x9F", messageBoxYesNoQuestionDefaultNo));
}

TEST_F(MessageBoxes, AHandlerThatThrowsAgreesToNothing) {
    setMessageBoxHandler([](const auto&, const auto&, auto) -> int { throw std::runtime_error("no"); });
    EXPECT_EQ(MessageBoxW("Overwrite?", "", messageBoxYesNoQuestionDefaultNo), answerNo);
    EXPECT_EQ(MessageBoxW("Failed", "", messageBoxOk), answerOk);
}

TEST(System, TheVersionIsAnNtFamilyOne) {
    const OsVersion version = GetVersionExA();
    EXPECT_EQ(version.dwPlatformId, 2U);
    EXPECT_GE(version.dwMajorVersion, 4U);
    EXPECT_TRUE(isDesktopWindowUnicode());
    const ScopedFault fault(SeamCall::desktopWindowUnicode);
    EXPECT_FALSE(isDesktopWindowUnicode());
}

TEST(System, TheClockShowsLocalTime) {
    const auto before = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    const LocalTime shown = GetLocalTime();
    std::tm parts{};
    parts.tm_year = shown.wYear - 1900;
    parts.tm_mon = shown.wMonth - 1;
    parts.tm_mday = shown.wDay;
    parts.tm_hour = shown.wHour;
    parts.tm_min = shown.wMinute;
    parts.tm_sec = shown.wSecond;
    parts.tm_isdst = -1;
    const std::time_t after = std::mktime(&parts);
    EXPECT_LE(std::abs(static_cast<long long>(after - before)), 5) << "fields swapped, or another time zone";
}
