// Libraries, message boxes, the system's version and its clock.
#include "platform/Lock.h"
#include "platform/interaction.h"
#include "platform/libraries.h"
#include "platform/system.h"
#include <cstdlib>
#include <ctime>
#include <gtest/gtest.h>
#include <mutex>
#include <stdexcept>
#include <thread>

using namespace pixkit::platform;

TEST(Machine, LibrariesAndFunctionsThatAreNotThereAreFound) {
    const UniqueLibrary zlib(LoadLibraryA("zlib1.dll"));
    if (!zlib) GTEST_SKIP() << "no zlib on this machine";
    EXPECT_NE(GetProcAddress(zlib.get(), "crc32"), nullptr);
    EXPECT_EQ(GetProcAddress(zlib.get(), "no_such_function"), nullptr);
    EXPECT_EQ(GetProcAddress(zlib.get(), nullptr), nullptr);
    for (const char* const name : {"pixkit-no-such-library.dll", "", static_cast<const char*>(nullptr)})
        EXPECT_EQ(LoadLibraryA(name), 0);
    int local = 0;
    for (const Handle handle : {Handle{0}, Handle{16}, reinterpret_cast<Handle>(&local)})
        EXPECT_FALSE(GetProcAddress(handle, "crc32") != nullptr || FreeLibrary(handle)) << handle;
}

TEST(Machine, AMessageIsNotPassedOnOrAThrowingHandlerAgrees) {
    setMessageBoxHandler([](const std::string& text, const std::string& caption, std::uint32_t style) {
        setMessageBoxHandler({}); // it may replace itself while it answers
        return text + caption == "Overwrite?Gr\xC3\xBC\xC3\x9F" && style == 292 ? answerYes : 0;
    });
    EXPECT_EQ(MessageBoxW("Overwrite?", "Gr\xC3\xBC\xC3\x9F", messageBoxYesNoQuestionDefaultNo), answerYes);
    setMessageBoxHandler([](const auto&, const auto&, auto) -> int { throw std::runtime_error("no"); });
    EXPECT_EQ(MessageBoxW("Overwrite?", "", messageBoxYesNoQuestionDefaultNo), answerNo);
    EXPECT_EQ(MessageBoxW("Failed", "", messageBoxOk), answerOk);
    setMessageBoxHandler({});
}

TEST(Machine, TwoThreadsHoldALockAtOnce) {
    Lock lock;
    int count = 0;
    const auto countOn = [&] {
        for (int i = 0; i < 100000; ++i) {
            const std::scoped_lock turn(lock);
            ++count;
        }
    };
    std::thread other(countOn);
    countOn();
    other.join();
    EXPECT_EQ(count, 200000);
}

TEST(Machine, TheVersionOrTheClockIsAnothers) {
    EXPECT_EQ(GetVersionExA().dwPlatformId, 2U);
    EXPECT_GE(GetVersionExA().dwMajorVersion, 4U);
    const std::time_t before = std::time(nullptr);
    const LocalTime shown = GetLocalTime();
    std::tm parts{};
    parts.tm_year = shown.wYear - 1900;
    parts.tm_mon = shown.wMonth - 1;
    parts.tm_mday = shown.wDay;
    parts.tm_hour = shown.wHour;
    parts.tm_min = shown.wMinute;
    parts.tm_sec = shown.wSecond;
    parts.tm_isdst = -1;
    EXPECT_LE(std::abs(std::difftime(std::mktime(&parts), before)), 5) << "fields swapped, or another time zone";
}
// SPDX-License-Identifier: MIT
