// The guard at every public member: whatever is thrown inside becomes the member's failure value, and the error report
// hears of it. Every failure that was not expected passes through reportError: one breakpoint finds its origin.
#pragma once
#include <exception>
#include <functional>
#include <string>
#include <utility>

namespace pixkit {

struct ErrorReport {
    std::string procedure;   // the public member, or the reader, that trapped the error
    std::string description; // what the run-time error says of itself
};

using ErrorReportHandler = std::function<void(const ErrorReport&)>;

// Who hears of trapped run-time errors. Without a handler (the initial state) they are only counted. Process-wide, not
// synchronised: set it while no other thread uses the component.
void setErrorReportHandler(ErrorReportHandler handler);

// Run-time errors trapped since the process started.
unsigned long trappedErrorCount() noexcept;

void reportError(const char* procedure, const char* description) noexcept;

// Runs `body` and returns its value, or `failure` when it throws.
template <class Value, class Body>
Value guarded(const char* procedure, Value failure, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::exception& error) {
        reportError(procedure, error.what());
    } catch (...) {
        reportError(procedure, "unknown run-time error");
    }
    return failure;
}

} // namespace pixkit
