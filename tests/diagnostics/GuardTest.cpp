#include "diagnostics/guard.h"
#include <gtest/gtest.h>
#include <stdexcept>

namespace pixkit {
namespace {

TEST(Guard, TurnsWhateverIsThrownIntoTheFailureValueAndReportsIt) {
    std::string heard;
    setErrorReportHandler(
        [&](const ErrorReport& report) { heard += report.procedure + ": " + report.description + "\n"; });
    const auto before = trappedErrorCount();
    EXPECT_EQ(guarded("Fine", 0, [] { return 7; }), 7);
    EXPECT_EQ(guarded("Known", -1, []() -> int { throw std::runtime_error("reason"); }), -1);
    EXPECT_EQ(guarded("Unknown", -1, []() -> int { throw 42; }), -1);
    EXPECT_EQ(heard, "Known: reason\nUnknown: unknown run-time error\n");
    setErrorReportHandler([](const ErrorReport&) { throw std::runtime_error("the report itself fails"); });
    EXPECT_EQ(guarded("Known", -1, []() -> int { throw std::runtime_error("reason"); }), -1);
    setErrorReportHandler({});
    EXPECT_EQ(trappedErrorCount() - before, 3U);
}

} // namespace
} // namespace pixkit
