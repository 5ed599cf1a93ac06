#include "diagnostics/guard.h"
#include "platform/HandlerSlot.h"
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
    return '"' + std::string(text.substr(0, longest)) + (text.size() > longest ? "\"..." : "\"");
}

void setErrorReportHandler(ErrorReportHandler handler) {
    handlerInUse.set(std::move(handler));
}

void reportError(const Procedure& procedure, const char* description, DescribeCall describe,
                 const void* call) noexcept {
    try {
        const auto handler = handlerInUse.get();
        if (!handler) return;
        ErrorReport report{procedure.name, description, moduleOf(procedure.file), procedure.line, {}, {}};
        if (describe != nullptr) describe(call, report);
        (*handler)(report);
    } catch (...) { // NOLINT(bugprone-empty-catch)
        // A report that fails must not become a second error.
    }
}

} // namespace pixkit
