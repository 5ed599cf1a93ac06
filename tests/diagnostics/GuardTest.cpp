#include "diagnostics/guard.h"
#include "diagnostics/ReportText.h"
#include "shared/resources.h"
#include "support/AllocationFault.h"
#include "support/Pictures.h"
#include "surface/cPixSheet.h"
#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>

namespace pixkit {
namespace {

std::string inOneLine(const std::vector<ErrorReport::Parameter>& values) {
    std::string all;
    for (const auto& [name, value] : values)
        all.append(name).append(" = ").append(value).append("; ");
    return all;
}

struct Counter {
    static constexpr int unattended = -1;
    int total = 0;
};
void describeInstance(const Counter& counter, ErrorReport& report) {
    report.variables.push_back({"total", inWords(counter.total)});
    report.isUnattended = counter.total == Counter::unattended;
}

TEST(Guard, AFailureIsReportedFalselyOrNotHeldBack) {
    std::vector<ErrorReport> heard;
    setErrorReportHandler([&](const ErrorReport& report) { heard.push_back(report); });
    const auto fails = []() -> int { throw std::runtime_error("reason"); };
    EXPECT_EQ(guarded("Fine", 0, [] { return 7; }), 7);
    EXPECT_EQ(guarded("Unknown", -1, []() -> int { throw 42; }), -1);
    const std::string name = "a \"name\"", longName(100, 'x');
    const double Scale = -1.5;
    const int* const nobody = nullptr;
    const Counter counter{7};
    EXPECT_EQ(guarded(Call(counter, "Known", "Width, Scale, On, File, Long, Host, Data", 0x80000000U, Scale, true, name,
                           longName, nobody, std::vector<int>(3)),
                      -1, fails),
              -1);
    const auto line = static_cast<std::uint32_t>(__LINE__ - 4);
    setErrorReportHandler([](const ErrorReport&) { throw std::runtime_error("the report itself fails"); });
    EXPECT_EQ(guarded("Known", -1, fails), -1);
    setErrorReportHandler({});
    EXPECT_EQ(guarded("Nobody hears", -1, fails), -1);

    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(heard[0].procedure + ": " + heard[0].description, "Unknown: unknown run-time error");
    EXPECT_EQ(heard[1].procedure + ": " + heard[1].description, "Known: reason");
    EXPECT_NE(heard[1].module.find("diagnostics/GuardTest.cpp"), std::string::npos);
    EXPECT_EQ(heard[1].line, line);
    EXPECT_EQ(inOneLine(heard[1].variables), "total = 7; ");
    EXPECT_EQ(inOneLine(heard[1].parameters),
              "Width = 2147483648; Scale = -1.500000; On = True; File = \"a \"name\"\"; Long = \"" +
                  longName.substr(0, 80) + "\"...; Host = Nothing; Data = 3 elements; ");
}

TEST(Guard, AReportIsWordedAnotherWay) {
    ErrorReport report;
    report.procedure = "Resize";
    report.description = "std::bad_alloc";
    report.module = "render/Resize.cpp";
    report.line = 42;
    report.variables = {{"Width", "3"}, {"Alpha", "0"}};
    report.versions = {{"pixkit", "3.0.41 (32 bits)"}, {"Windows", "10.0.19045"}};
    EXPECT_EQ(reportText(report), R"(Error: std::bad_alloc
Module: render/Resize.cpp
Procedure: Resize
Line: 42

Parameters: none

Variables:
  Width = 3
  Alpha = 0

Versions:
  pixkit 3.0.41 (32 bits)
  Windows 10.0.19045
)");
    EXPECT_EQ(textInWords("two\nlines"), "\"two lines\"");
    EXPECT_EQ(textInWords(std::string(79, 'x') + "\xC3\xA4"), '"' + std::string(79, 'x') + "\"...")
        << "half a character";
}

TEST(Guard, AReportIsShownTwiceOrInsideOfAnotherOrToNobody) {
    Counter counter;
    const auto fail = [&](const char* what, int line) {
        guarded(Call(counter, Procedure("Show", "here.cpp", static_cast<std::uint32_t>(line))), 0,
                [&]() -> int { throw std::runtime_error(what); });
    };
    std::vector<std::string> heard, shown;
    setErrorReportHandler([&](const ErrorReport& report) { heard.push_back(report.text); });
    setErrorReportPresenter([&](const ErrorReport& report) {
        shown.push_back(report.description);
        if (report.description == "shows an error itself") fail("while another is shown", 1);
        if (report.description == "throws") throw std::runtime_error("the presenter fails");
        return report.description != "is not shown";
    });
    for (const char* const what : {"first", "first", "throws", "throws", "is not shown", "is not shown",
                                   "shows an error itself", "while another is shown"})
        fail(what, 1);
    fail("first", 2);
    counter.total = Counter::unattended;
    fail("unattended", 1);
    setErrorReportPresenter({});
    fail("shown to nobody", 1);
    setErrorReportHandler({});
    EXPECT_EQ(shown, (std::vector<std::string>{"first", "throws", "throws", "is not shown", "is not shown",
                                               "shows an error itself", "while another is shown", "first"}));
    EXPECT_EQ(heard.size(), 12U);
    EXPECT_NE(heard[0].find("Error: first\nModule: here.cpp\nProcedure: Show\n"), std::string::npos) << heard[0];
}

TEST(Guard, AMemberThatRunsOutOfMemoryDoesNotSayWhatItWasCalledWith) {
    cPixSheet sheet;
    test::fill(sheet, 1, 1, {{1, 2, 3, 255}});
    const ByteArray bytes(std::vector<std::uint8_t>(20));
    const ResourceId number = 7, section = "CUSTOM";
    const PngValue text = std::string(40, 'x');
    ByteArray saved;
    setResourceProvider({{}, [](const ResourceId&, const std::string&) { return std::vector<std::uint8_t>(20); }});
    const struct {
        std::function<bool()> call;
        std::string reported;
    } rows[] = {
        {[&] { return sheet.PngPropertySet(pngText, text, "Key"); },
         "PngPropertySet: Property = " + std::to_string(pngText) + "; Value = \"" + std::get<std::string>(text) +
             "\"; Keyword = \"Key\"; "},
        {[&] { return sheet.SaveToStream_GIF(saved, false, 9); },
         "SaveToStream_GIF: outStream = 0 elements; UseAdaptivePalette = False; OpaquenessTolerance = 9; "
         "PromptOverWrite = True; "},
        {[&] { return sheet.SaveToStream_ICO(saved) != 0; },
         "SaveToStream_ICO: outStream = 0 elements; Source = 0 elements; Sizes = 0 elements; "},
        {[&] { return sheet.LoadPicture_Stream(bytes, 16, 24, 0, 20, true, 8); },
         "LoadPicture_Stream: inStream = 20 elements; iconCx = 16; iconCy = 24; streamStart = 0; streamLength = 20; "
         "SaveFormat = True; iconBitDepth = 8; "},
        {[&] { return sheet.LoadPicture_Resource(number, section, 16, 24); },
         "LoadPicture_Resource: ResIndex = 7; ResSection = \"CUSTOM\"; iconCx = 16; iconCy = 24; streamStart = 0; "
         "streamLength = 0; iconBitDepth = 32; "}};
    std::vector<ErrorReport> heard;
    setErrorReportHandler([&](const ErrorReport& report) { heard.push_back(report); });
    for (const auto& [call, reported] : rows) {
        SCOPED_TRACE(reported);
        heard.clear();
        const test::AllocationFault fault(0, 1);
        EXPECT_FALSE(call());
        ASSERT_EQ(heard.size(), 1U);
        EXPECT_EQ(heard[0].procedure + ": " + inOneLine(heard[0].parameters), reported);
        EXPECT_NE(inOneLine(heard[0].variables).find("; Height = "), std::string::npos);
        // The guard's place is that of the member, not that of a helper of several.
        EXPECT_NE(heard[0].module.find(".cpp"), std::string::npos);
    }
    setErrorReportHandler({});
    setResourceProvider({});
}

} // namespace
} // namespace pixkit
// SPDX-License-Identifier: MIT
