// What a command says of each of its results: a line for people, or an object of a JSON array.
#pragma once
#include "cli/Console.h"
#include "cli/Scaling.h"
#include <cstdint>
#include <string>

namespace pixkit::cli {

// How much is said of results, and how.
struct Reporting {
    bool isQuiet = false;   // failures alone
    bool isVerbose = false; // sizes, too
    bool isJson = false;
};

struct Result {
    enum class Status { done, planned, skipped, failed };

    std::string input, output; // files; either may be empty
    Status status = Status::failed;
    std::string reason = {};   // why it was skipped, or how it failed
    std::string failedAt = {}; // the file, or part of a picture, that it failed at
    PictureSize before = {}, after = {};
    std::uintmax_t bytes = 0; // of the file that was written
    // Said in place of the sizes where a result is not one picture of one picture: of compose and sheet what was put
    // together ("640 x 480, 3 layers"), of effects how many files there are ("41 results"). Else empty.
    std::string summary = {};
};

// Failures go to `err`, everything else to `out`, but to `err` where that carries the picture itself. `command` and
// `index` are those of the result.
void report(const Result& result, const Reporting& reporting, const char* command, std::size_t index, Console& console);
// The array around results, where they are said as JSON: it ends however the work does.
class ReportArray {
  public:
    ReportArray(bool isJson, bool hasResults, Console& console);
    ~ReportArray();
    ReportArray(const ReportArray&) = delete;
    ReportArray& operator=(const ReportArray&) = delete;

    bool hasResults() const noexcept { return m_hasResults; }
    void noteResult() noexcept { m_hasResults = true; }

  private:
    const bool m_isJson;
    bool m_hasResults;
    Console& m_console;
};

} // namespace pixkit::cli
// SPDX-License-Identifier: MIT
