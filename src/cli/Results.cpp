#include "cli/Results.h"
#include "cli/Names.h"
#include "cli/Streams.h"
#include "cli/Text.h"
#include <exception>
#include <ostream>

namespace pixkit::cli {

namespace {

using Status = Result::Status;

const char* word(Status status) {
    constexpr const char* words[] = {"done", "planned", "skipped", "failed"};
    return words[static_cast<std::size_t>(status)];
}

void writeJson(std::ostream& out, const Result& result) {
    out << '{';
    // An input may have an empty name, and then no output.
    if (!result.input.empty() || result.output.empty()) out << "\"input\": " << jsonString(result.input) << ", ";
    if (!result.output.empty()) out << "\"output\": " << jsonString(result.output) << ", ";
    out << "\"status\": \"" << word(result.status) << '"';
    if (!result.reason.empty()) {
        const std::string& own = result.input.empty() ? result.output : result.input;
        const bool isElsewhere = !result.failedAt.empty() && result.failedAt != own;
        out << ", \"reason\": " << jsonString((isElsewhere ? result.failedAt + ": " : "") + result.reason);
    }
    if (result.after.width != 0)
        out << ", \"width\": " << result.after.width << ", \"height\": " << result.after.height;
    if (result.status == Status::done) out << ", \"bytes\": " << result.bytes;
    out << '}';
}

void writeSize(std::ostream& out, PictureSize size) {
    out << size.width << " x " << size.height;
}

void writeBytes(std::ostream& out, std::uintmax_t bytes) {
    const std::string text = bytesText(bytes);
    out << ", " << text << (text.find(' ') == std::string::npos ? " bytes" : "");
}

void writeLine(std::ostream& out, const Result& result, const Reporting& reporting) {
    if (!result.input.empty()) out << shown(result.input) << " -> ";
    out << shown(result.output);
    if (!result.summary.empty()) out << ": " << result.summary;
    if (result.status == Status::skipped) out << ": skipped, " << result.reason;
    if (result.status == Status::planned) out << " (not written)";
    if (reporting.isVerbose && !result.summary.empty()) {
        if (result.status == Status::done) writeBytes(out, result.bytes);
    } else if (reporting.isVerbose && result.after.width != 0) {
        out << ": ";
        if (result.before.width != 0) writeSize(out, result.before);
        if (result.before.width != 0) out << " -> ";
        writeSize(out, result.after);
        if (result.status == Status::done) writeBytes(out, result.bytes);
    }
    out << '\n';
}

} // namespace

void report(const Result& result, const Reporting& reporting, const char* command, std::size_t index,
            Console& console) {
    const bool isFailed = result.status == Status::failed;
    if (isFailed) {
        console.err << "pixkit " << command << ": " << shownName(result.failedAt) << ": " << shown(result.reason)
                    << '\n';
    }
    if (reporting.isJson) {
        console.out << (index == 0 ? "\n  " : ",\n  ");
        writeJson(console.out, result);
    } else if (!isFailed && !reporting.isQuiet) {
        const bool carriesPicture = isStream(result.output);
        if (!carriesPicture || reporting.isVerbose)
            writeLine(carriesPicture ? console.err : console.out, result, reporting);
    }
}

ReportArray::ReportArray(bool isJson, bool hasResults, Console& console)
    : m_isJson(isJson), m_hasResults(hasResults), m_console(console) {
    if (isJson) console.out << '[';
}

ReportArray::~ReportArray() {
    try {
        if (m_isJson) m_console.out << (m_hasResults ? "\n]\n" : "]\n");
    } catch (const std::exception&) { // streams of other programs may throw; the command's do not
    }
}

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
