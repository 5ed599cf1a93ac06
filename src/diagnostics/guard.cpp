#include "diagnostics/guard.h"
#include <atomic>

namespace pixkit {

namespace {

ErrorReportHandler& handlerSlot() {
    static ErrorReportHandler handler;
    return handler;
}

std::atomic<unsigned long> trappedErrors{0};

} // namespace

void setErrorReportHandler(ErrorReportHandler handler) {
    handlerSlot() = std::move(handler);
}

unsigned long trappedErrorCount() noexcept {
    return trappedErrors.load(std::memory_order_relaxed);
}

void reportError(const char* procedure, const char* description) noexcept {
    trappedErrors.fetch_add(1, std::memory_order_relaxed);
    try {
        // A copy: the handler may replace itself while it runs.
        if (const ErrorReportHandler handler = handlerSlot()) handler({procedure, description});
    } catch (...) { // NOLINT(bugprone-empty-catch)
        // A report that fails must not become a second error: the count above has to do.
    }
}

} // namespace pixkit
