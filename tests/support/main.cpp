#include "platform/faults.h"
#include "platform/gdiplus.h"
#include "platform/handle.h"
#include "surface/cPixSheet.h"
#include <filesystem>
#include <gtest/gtest.h>
#include <string_view>

namespace {

#ifdef PIXKIT_TESTS_COM // what OLE, dialogs and DLLs make at their first use, they keep: tests count what they need
constexpr bool isWatching = false;
#else
constexpr bool isWatching = true;
#endif

// Whatever a test makes, bitmaps, device contexts, files and libraries are given back at its end: no sanitizer sees
// them leak, because the table of handles still knows them.
class HandleWatch : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { m_before = pixkit::platform::openHandles(); }
    void OnTestEnd(const testing::TestInfo& test) override {
        pixkit::platform::disarmFaults();
        // Locks of the language's own for which threads have waited keep two handles each on Windows, once and for all.
        const bool hasThreads = std::filesystem::path::preferred_separator == '\\' &&
                                std::string_view(test.test_suite_name()).ends_with("CommandTranscript");
        const std::size_t ofLocks = hasThreads ? 12 : 0;
        EXPECT_TRUE(!isWatching || pixkit::platform::openHandles() - m_before <= ofLocks) << "handles were leaked";
    }
    std::size_t m_before = 0;
};

} // namespace

int main(int argc, char** argv) {
    // The same bytes are expected on every system. Tests that are about GDI+ bring it along.
    pixkit::platform::setGdiplusProvider([] { return pixkit::platform::GdiplusApi(); });
    { // what the system makes at its first use stays
        pixkit::cPixSheet first;
        first.InitializeDIB(1, 1);
        first.LoadDIBinDC(true);
    }
    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new HandleWatch);
    return RUN_ALL_TESTS();
}
// SPDX-License-Identifier: MIT
