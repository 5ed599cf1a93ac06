#include "diagnostics/guard.h"
#include "diagnostics/Presentation.h"
#include "diagnostics/ReportText.h"
#include "platform/HandlerSlot.h"
#include "platform/reporting.h"
#include <algorithm>
#include <string>
#include <utility>

namespace pixkit {

namespace {

HandlerSlot<ErrorReportHandler> handlerInUse;

// From the folder of the sources on: what lies before it is the affair of the machine that compiled them.
std::string moduleOf(std::string_view file) {
    constexpr std::string_view sources = "src/";
    const std::size_t start = file.rfind(sources);
    return std::string(start == file.npos ? file : file.substr(start + sources.size()));
}

} // namespace

std::string numberInWords(long long value) {
    return std::to_string(value);
}

std::string numberInWords(double value) {
    return std::to_string(value);
}

std::string textInWords(std::string_view text) {
    constexpr std::size_t longest = 80;
    std::size_t kept = std::min(text.size(), longest);
    const auto continues = [&](std::size_t i) { return (static_cast<unsigned char>(text[i]) & 0xC0U) == 0x80; };
    while (kept < text.size() && kept > 0 && continues(kept)) // not amid a character of UTF-8
        --kept;
    std::string result = '"' + std::string(text.substr(0, kept)) + (kept < text.size() ? "\"..." : "\"");
    // One line each.
    std::ranges::replace_if(
        result, [](unsigned char letter) { return letter < ' '; }, ' ');
    return result;
}

void setErrorReportHandler(ErrorReportHandler handler) {
    handlerInUse.set(std::move(handler));
}

void reportError(const Procedure& procedure, const char* description, DescribeCall describe,
                 const void* call) noexcept {
    // A report that fails must not become a second error, nor keep others from hearing of the first.
    const auto attempt = [](auto&& step) noexcept {
        try {
            step();
        } catch (...) { // NOLINT(bugprone-empty-catch)
        }
    };
    attempt([&] {
        ErrorReport report;
        report.procedure = procedure.name;
        report.description = description;
        report.module = moduleOf(procedure.file);
        report.line = procedure.line;
        if (describe != nullptr) describe(call, report);
        report.versions = versionsInUse();
        report.text = reportText(report);
        platform::OutputDebugStringW(report.text);
        attempt([&] {
            if (const auto handler = handlerInUse.get()) (*handler)(report);
        });
        present(report);
    });
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
