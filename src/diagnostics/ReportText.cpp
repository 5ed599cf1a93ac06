#include "diagnostics/ReportText.h"
#include "platform/reporting.h"
#include "shared/version.h"

namespace pixkit {

namespace {

template <class Items, class InWords>
void addList(std::string& text, const char* title, const Items& items, InWords inWords) {
    text.append("\n").append(title).append(items.empty() ? ": none\n" : ":\n");
    for (const auto& item : items)
        text.append("  ").append(inWords(item)).append("\n");
}

} // namespace

std::vector<ErrorReport::Version> versionsInUse() {
    constexpr int bits = 8 * sizeof(void*);
    std::vector<ErrorReport::Version> result = {{"pixkit", PIXKIT_FULL_VERSION " (" + std::to_string(bits) + " bits)"}};
    for (auto& [name, version] : platform::versionsInUse())
        result.push_back({std::move(name), std::move(version)});
    return result;
}

std::string reportText(const ErrorReport& report) {
    std::string text = "Error: " + report.description + "\nModule: " + report.module +
                       "\nProcedure: " + report.procedure + "\nLine: " + std::to_string(report.line) + "\n";
    const auto withValue = [](const ErrorReport::Parameter& it) { return it.name + " = " + it.value; };
    addList(text, "Parameters", report.parameters, withValue);
    addList(text, "Variables", report.variables, withValue);
    addList(text, "Versions", report.versions,
            [](const ErrorReport::Version& it) { return it.name + " " + it.number; });
    return text;
}

} // namespace pixkit
// SPDX-License-Identifier: MIT
