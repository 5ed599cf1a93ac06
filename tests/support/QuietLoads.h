// Watches what a test does on the side.
#pragma once
#include "diagnostics/guard.h"
#include "platform/faults.h"
#include "platform/handle.h"
#include "platform/interaction.h"
#include "support/Pictures.h"

namespace pixkit::test {

// Fails a test in which a message box came up or a run-time error was trapped without the test asking for it.
class QuietLoads : public testing::Test {
  protected:
    QuietLoads() {
        platform::setMessageBoxHandler([this](const std::string& text, const std::string&, std::uint32_t style) {
            EXPECT_EQ(style, platform::messageBoxOk);
            boxes.push_back(text);
            return platform::answerOk;
        });
        setErrorReportHandler([this](const ErrorReport& report) { reports.push_back(report.procedure); });
    }
    ~QuietLoads() override {
        platform::setMessageBoxHandler({});
        setErrorReportHandler({});
        EXPECT_EQ(boxes, expectedBoxes);
        EXPECT_EQ(reports, expectedReports);
        EXPECT_EQ(platform::openHandles(), handles) << "handles leak";
    }

    std::vector<std::string> boxes, reports;
    std::vector<std::string> expectedBoxes, expectedReports;

  private:
    std::size_t handles = platform::openHandles();
};

} // namespace pixkit::test
// SPDX-License-Identifier: MIT
