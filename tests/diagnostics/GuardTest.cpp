#include "diagnostics/guard.h"
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
    int total = 0;
};
void describeInstance(const Counter& counter, ErrorReport& report) {
    report.variables.push_back({"total", inWords(counter.total)});
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
