#include "diagnostics/guard.h"
#include <gtest/gtest.h>
#include <stdexcept>

namespace pixkit {
namespace {

TEST(Guard, AFailureIsReportedFalselyOrNotHeldBack) {
    std::vector<ErrorReport> heard;
    setErrorReportHandler([&](const ErrorReport& report) { heard.push_back(report); });
    const auto fails = []() -> int { throw std::runtime_error("reason"); };
    EXPECT_EQ(guarded("Fine", 0, [] { return 7; }), 7);
    EXPECT_EQ(guarded("Unknown", -1, []() -> int { throw 42; }), -1);
    const std::string name = "a \"name\"", longName(100, 'x');
    const double Scale = -1.5;
    const int* const nobody = nullptr;
    EXPECT_EQ(guarded(Call("Known", "Width, Scale, On, File, Long, Host, Data", 0x80000000U, Scale, true, name,
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
    std::string parameters;
    for (const auto& [parameter, value] : heard[1].parameters)
        parameters += parameter + " = " + value + "; ";
    EXPECT_EQ(parameters, "Width = 2147483648; Scale = -1.500000; On = True; File = \"a \"name\"\"; Long = \"" +
                              longName.substr(0, 80) + "\"...; Host = Nothing; Data = 3 elements; ");
}

} // namespace
} // namespace pixkit
